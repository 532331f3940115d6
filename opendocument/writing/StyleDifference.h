// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <document/editing/StylesAsRead.h>

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zt {

/// What is to be done to the elements of the styles of each part, and to the names in its text.
class StyleDifference {
 public:
  /// `named` is the part in which named styles stand. Throws `EditError` for what no file can say.
  StyleDifference(const ZTDocument& document, const std::vector<StyleAsRead>& before,
                  const ZTDocument::Fonts& fontsBefore);

  struct Element {
    const StyleAsRead* style = nullptr;  ///< none: only levels of the list changed
    bool isRemoved = false;
    bool isRewritten = false;  ///< a list that has other levels: its element is made anew
    std::vector<std::pair<std::size_t, const StyleAsRead*>> levels;  ///< by the number of the child element
  };
  struct Part {
    std::map<std::size_t, Element> elements;                 ///< by the number of the style element
    std::unordered_map<std::string, std::string> usedNames;  ///< "family:name" in the text to what it is called now
    std::map<std::string, std::string> newFonts;             ///< to their families
    std::set<std::string> goneFonts;
    std::vector<const OdfStyle*> newNamed;
    std::vector<const OdfStyle*> newAutomatic;

    [[nodiscard]] bool isEmpty() const {
      return elements.empty() && newFonts.empty() && goneFonts.empty() && usedNames.empty() && newNamed.empty() &&
             newAutomatic.empty();
    }
  };
  [[nodiscard]] const std::vector<Part>& parts() const noexcept { return mParts; }
  [[nodiscard]] bool isEmpty() const;

  /// What a style is called in a part. Throws `EditError` for an automatic style that is not there.
  [[nodiscard]] std::string nameIn(std::size_t part, const OdfStyle& style) const;
  /// What a use is called.
  [[nodiscard]] std::string nameOfUse(std::size_t use) const;

 private:
  void compare(const StyleAsRead& before);
  void findNewStyles(const std::vector<StyleAsRead>& before);
  void findUses();
  std::string freeName(const OdfStyle& style);

  const ZTDocument& mDocument;
  std::vector<Part> mParts;
  std::map<std::pair<std::size_t, const OdfStyle*>, std::string> mGivenNames;
  std::unordered_map<std::string, bool> mTaken;  // every name of a style, filled when one is needed
  std::size_t mNextNumber = 1;
};

}  // namespace zt
