// SPDX-License-Identifier: MIT
#pragma once

#include <document/styles/StyleFamily.h>
#include <wordprocessing/reading/WordDocument.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zt {

/// Which style is meant by an id, which style each one is based on, and in which order bases come first. All by index
/// into the styles of the document.
class StyleIds {
 public:
  StyleIds(const WordDocument& raw, std::vector<Finding>& findings);

  [[nodiscard]] StyleFamily familyOf(std::size_t style) const { return mStyles[style].family; }
  /// The identifier that the style goes under; empty for one without an id.
  [[nodiscard]] const std::string& identifierOf(std::size_t style) const { return mStyles[style].identifier; }
  /// The style that it is based on, `kNowhere` for the root of its kind.
  [[nodiscard]] std::size_t baseOf(std::size_t style) const { return mStyles[style].base; }
  /// The style with that kind and id, or `kNowhere`.
  [[nodiscard]] std::size_t find(StyleFamily family, std::string_view id) const;
  /// The style that text has which names none: the last that says so (17.7.4.17), or `kNowhere`.
  [[nodiscard]] std::size_t defaultOf(StyleFamily family) const;
  /// All styles, bases before those that are based on them, else in the order of the file.
  [[nodiscard]] const std::vector<std::size_t>& basesFirst() const noexcept { return mOrder; }

 private:
  struct Style {
    StyleFamily family = StyleFamily::paragraph;
    std::string identifier;
    std::size_t base = kNowhere;
  };

  void identify(std::size_t style);
  void chooseBase(std::size_t style);
  void cutLoops();
  void order();
  void tell(const char* code, std::size_t style, const std::string& message);

  const WordDocument& mRaw;
  std::vector<Finding>& mFindings;
  std::vector<Style> mStyles;
  std::unordered_map<std::string, std::size_t> mPlaces;   // by identifier
  std::unordered_map<std::string, std::size_t> mRepeats;  // the last number that was added to a doubled identifier
  std::unordered_map<std::string, std::size_t> mDefaults;
  std::vector<std::size_t> mOrder;
};

}  // namespace zt
