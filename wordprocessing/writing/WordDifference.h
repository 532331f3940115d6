// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/StylesAsRead.h>
#include <wordprocessing/reading/WordImporter.h>

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

/// What the text had when it was read: for each use the named style that it stands on, or none, and its direct
/// formatting.
struct WordUseAsRead {
  Ref<OdfStyle> base;
  Ref<PropertyMap> own;
};

std::vector<WordUseAsRead> usesAsRead(const ImportedWord& word);

/// What is to be done to the elements of styles and lists, to direct formatting and to names in the text.
class WordDifference {
 public:
  /// Throws `EditError` for what no file of this format can say.
  WordDifference(const WordDocument& raw, const ZTDocument& document, const std::vector<StyleAsRead>& before,
                 const std::vector<WordUseAsRead>& uses);

  /// A place of the text that is formatted otherwise now.
  struct Use {
    StyleFamily family = StyleFamily::paragraph;
    bool hasOtherName = false;
    std::optional<std::string> name;  ///< of the style now, none for no name at all; counts with `hasOtherName`
    Ref<const PropertyMap> before;    ///< direct formatting
    Ref<const PropertyMap> after;
  };
  /// A style that stands in an element: what the element stands for itself, a part of a table style, a level.
  struct Changed {
    const StyleAsRead* style = nullptr;
    std::string part;  ///< "firstRow", "0"; empty for the element itself
  };
  using Element = std::vector<Changed>;

  std::map<std::size_t, Element> styles;         ///< by the number of the w:style
  std::map<std::size_t, Element> abstractLists;  ///< by the number of the w:abstractNum
  std::map<std::size_t, Element> lists;          ///< by the number of the w:num
  std::vector<const StyleAsRead*> roots;         ///< document defaults
  std::vector<const OdfStyle*> newStyles;
  std::unordered_map<std::string, Use> uses;           ///< by `useKey` of what was read
  std::unordered_map<std::string, std::string> names;  ///< by `styleIdentifier` of what was read

  [[nodiscard]] bool isEmpty() const {
    return styles.empty() && abstractLists.empty() && lists.empty() && roots.empty() && newStyles.empty() &&
           !changesText();
  }
  [[nodiscard]] bool changesText() const { return !uses.empty() || !names.empty(); }

 private:
  void compare(const ZTDocument& document, const StyleAsRead& before);
  void addList(const StyleAsRead& before, const StyleOrigin& origin);
  void addStyle(const StyleAsRead& before, const StyleOrigin& origin);
  void findNewStyles(const ZTDocument& document, const std::vector<StyleAsRead>& before);
  void compareUse(const WordUse& raw, const OdfStyle& now, const WordUseAsRead& before);
};

}  // namespace zt
