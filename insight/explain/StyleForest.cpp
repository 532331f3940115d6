// SPDX-License-Identifier: MIT
#include <insight/explain/StyleForest.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

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

std::string StyleForest::asDot() const {
  std::string dot = "digraph styles {\n  rankdir=LR;\n  node [shape=box, fontname=\"sans-serif\"];\n";
  for (const Node& node : mNodes) {
    const std::string name = dotText(mDocument.labelOf(*node.style));
    dot += "  " + name;
    if (node.automaticChildren > 0 && !mWithAutomatic) {
      dot +=
          " [label=" + dotText(fmt::format("{} (+{})", mDocument.labelOf(*node.style), node.automaticChildren)) + ']';
    }
    dot += ";\n";
    if (node.depth > 0) {
      dot += "  " + name + " -> " + dotText(mDocument.labelOf(*node.style->parent())) + ";\n";
    }
  }
  return dot + "}\n";
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
