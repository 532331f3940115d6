// SPDX-License-Identifier: MIT
#include <tool/console/ForestText.h>

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace zt {

namespace {

constexpr std::size_t kDeepestDrawn = 40;

}  // namespace

void printForest(const StyleForest& forest, const Console& console) {
  const ZTDocument& document = forest.document();
  std::vector<bool> lasts;  // of the ancestors: whether their branch goes on
  for (const StyleForest::Node& node : forest.nodes()) {
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
                << (node.depth == 0 ? console.bold(document.labelOf(*node.style)) : document.labelOf(*node.style));
    if (node.style->isNamed() && !document.labelOf(*node.style).ends_with(':' + node.style->name().text())) {
      console.out << " \"" << node.style->name().view() << '"';
    }
    if (node.namedChildren + node.automaticChildren > 0) {
      console.out << console.faint(
          fmt::format("  ({} named, {} automatic)", node.namedChildren, node.automaticChildren));
    }
    console.out << '\n';
  }
}

}  // namespace zt
