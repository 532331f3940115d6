// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace zt {

/// What distinguishes two documents' styles. Identified styles are the same if they have the same identifier,
/// others if they have the same label (part, family and name); anonymous styles without a label, or with one
/// that repeats, count as the same if they have the same content.
class DocumentDiff {
 public:
  DocumentDiff(const ZTDocument& before, const ZTDocument& after);

  struct Change {
    std::string what;  ///< a property, or "name", "parent", "class", "locked"
    std::string before;
    std::string after;
  };
  struct ChangedStyle {
    std::string label;
    std::vector<Change> changes;
  };

  [[nodiscard]] bool isEmpty() const { return added.empty() && removed.empty() && changed.empty(); }
  /// Lines of "+ style", "- style" and "~ style" with the changes below.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] nlohmann::ordered_json asJson() const;

  std::vector<std::string> added;  // in the order of the second document
  std::vector<std::string> removed;
  std::vector<ChangedStyle> changed;
};

}  // namespace zt
