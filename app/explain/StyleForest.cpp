#include <app/explain/StyleForest.h>

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace zt {

namespace {

constexpr std::size_t kDeepestDrawn = 40;

std::string dotText(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') result += '\\';
    result += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
  }
  return result + '"';
}

}  // namespace

StyleForest::StyleForest(const ZTDocument& document, const std::string& family, bool withAutomatic)
    : mDocument(document), mWithAutomatic(withAutomatic) {
  struct Step {
    const OdfStyle* style;
    std::size_t depth;
    bool isLast;
  };
  const ChildrenInOrder children(document);
  std::vector<Step> open;
  for (const OdfStyle* top : topStyles(document)) {
    if (family.empty() || top->familyName() == family) open.push_back({top, 0, false});
  }
  std::reverse(open.begin(), open.end());
  while (!open.empty()) {
    const Step step = open.back();
    open.pop_back();
    Node node{step.style, step.depth, 0, 0, step.isLast};
    const std::size_t from = open.size();
    for (const OdfStyle* child : children.of(*step.style)) {
      ++(child->isIdentified() ? node.namedChildren : node.automaticChildren);
      if (shows(*child)) open.push_back({child, step.depth + 1, false});
    }
    if (open.size() > from) open.back().isLast = true;
    std::reverse(open.begin() + static_cast<std::ptrdiff_t>(from), open.end());
    mNodes.push_back(node);
  }
}

void StyleForest::print(const Console& console) const {
  std::vector<bool> lasts;  // of the ancestors: whether their branch goes on
  for (const Node& node : mNodes) {
    lasts.resize(std::min(node.depth, kDeepestDrawn));
    std::string branches;
    for (std::size_t depth = 1; depth < lasts.size(); ++depth) branches += lasts[depth] ? "   " : "│  ";
    if (node.depth > kDeepestDrawn) {
      branches += fmt::format("... {} ", node.depth);
    } else if (node.depth > 0) {
      branches += node.isLast ? "└─ " : "├─ ";
    }
    if (node.depth < kDeepestDrawn) lasts.push_back(node.isLast);
    console.out << console.faint(branches)
                << (node.depth == 0 ? console.bold(mDocument.labelOf(*node.style)) : mDocument.labelOf(*node.style));
    if (node.style->isNamed() && !mDocument.labelOf(*node.style).ends_with(':' + node.style->name().text())) {
      console.out << " \"" << node.style->name().view() << '"';
    }
    if (node.namedChildren + node.automaticChildren > 0) {
      console.out << console.faint(
          fmt::format("  ({} named, {} automatic)", node.namedChildren, node.automaticChildren));
    }
    console.out << '\n';
  }
}

void StyleForest::printDot(const Console& console) const {
  console.out << "digraph styles {\n  rankdir=LR;\n  node [shape=box, fontname=\"sans-serif\"];\n";
  for (const Node& node : mNodes) {
    const std::string label = mDocument.labelOf(*node.style);
    console.out << "  " << dotText(label);
    if (node.automaticChildren > 0 && !mWithAutomatic) {
      console.out << " [label=" << dotText(fmt::format("{} (+{})", label, node.automaticChildren)) << ']';
    }
    console.out << ";\n";
    if (node.depth > 0) {
      console.out << "  " << dotText(label) << " -> " << dotText(mDocument.labelOf(*node.style->parent())) << ";\n";
    }
  }
  console.out << "}\n";
}

nlohmann::ordered_json StyleForest::asJson() const {
  auto nodes = nlohmann::ordered_json::array();
  for (const Node& node : mNodes) {
    const bool hasParent = node.depth > 0;
    nodes.push_back({{"style", mDocument.labelOf(*node.style)},
                     {"display_name", node.style->isNamed() ? nlohmann::ordered_json(node.style->name().text())
                                                            : nlohmann::ordered_json()},
                     {"family", node.style->familyName()},
                     {"parent", hasParent ? nlohmann::ordered_json(mDocument.labelOf(*node.style->parent()))
                                          : nlohmann::ordered_json()},
                     {"depth", node.depth},
                     {"named_children", node.namedChildren},
                     {"automatic_children", node.automaticChildren}});
  }
  nlohmann::ordered_json json;
  json["document"] = mDocument.shown;
  json["nodes"] = std::move(nodes);
  return json;
}

}  // namespace zt
