// SPDX-License-Identifier: MIT
#pragma once

#include <insight/explain/Explanation.h>

#include <nlohmann/json.hpp>

namespace zt {

/// Which style inherits from which, flattened: the nodes in the order of a walk from the roots down.
class StyleForest {
 public:
  struct Node {
    const OdfStyle* style = nullptr;
    std::size_t depth = 0;
    std::size_t namedChildren = 0;
    std::size_t automaticChildren = 0;  ///< anonymous ones: automatic styles, levels of lists
    bool isLast = false;                ///< of the children of its parent that are shown
  };

  /// All families, or the one with the name. Anonymous styles are counted in any case and become
  /// nodes of their own only `withAutomatic`.
  StyleForest(const ZTDocument& document, const std::string& family, bool withAutomatic);

  [[nodiscard]] const ZTDocument& document() const noexcept { return mDocument; }
  [[nodiscard]] const std::vector<Node>& nodes() const noexcept { return mNodes; }

  /// The text of a Graphviz graph.
  [[nodiscard]] std::string asDot() const;
  [[nodiscard]] nlohmann::ordered_json asJson() const;

 private:
  [[nodiscard]] bool shows(const OdfStyle& style) const { return mWithAutomatic || style.isIdentified(); }

  const ZTDocument& mDocument;
  bool mWithAutomatic;
  std::vector<Node> mNodes;
};

}  // namespace zt
