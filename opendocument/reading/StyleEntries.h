// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/reading/StyleIndex.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

/// One thing that a style sets, as text: an attribute or a child of a property element, a map, or
/// one of the references that a style element carries itself.
struct StyleEntry {
  std::string key;   ///< "text|fo:color"
  std::string name;  ///< "fo:color"
  std::string value;
  bool isText = true;            ///< an attribute, not an element
  bool equalsInherited = false;  ///< the value is textually what the style would inherit
};

/// The entries of all styles that count, each compared with what its style inherits from named
/// parents and from the default style of the family. Where parents form a loop, it is cut at one of
/// its members. Linear in the number of entries, however long the chains.
class StyleEntries {
 public:
  explicit StyleEntries(const StyleIndex& index);

  [[nodiscard]] const std::vector<StyleEntry>& of(const RawStyle& style) const { return mEntries.at(&style); }
  [[nodiscard]] const std::unordered_map<const RawStyle*, std::vector<StyleEntry>>& all() const { return mEntries; }

 private:
  void compareWithInherited(const StyleIndex& index);

  std::unordered_map<const RawStyle*, std::vector<StyleEntry>> mEntries;
};

}  // namespace zt
