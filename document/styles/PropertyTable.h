// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The tables behind PropertyRules.h: one row for each attribute of OpenDocument, and each element or attribute of
/// WordprocessingML, that is understood.

#include <document/styles/StyleValues.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace zt {

/// A row: which values an attribute takes. Made while compiling, so that a letter that means nothing is an error there.
struct PropertyRow {
  /// `letters`: those of `kKindLetters`; ^ a percentage that is a share of the parent's value, . lengths in points,
  /// ! not inherited, ~ a toggle.
  consteval PropertyRow(std::string_view nameOfRow, std::string_view letters, std::string_view words = {})
      : name(nameOfRow), keywords(words) {
    for (const char letter : letters) {
      switch (letter) {
        case '^':
          isShareOfParent = true;
          kinds |= kPercentage;
          break;
        case '.': prefersPoints = true; break;
        case '!': isInherited = false; break;
        case '~': isToggle = true; break;
        default: kinds |= kindOfLetter(letter); break;
      }
    }
    if (kinds == 0 && keywords.empty()) throw "a property takes some values";
  }

  std::string_view name;      ///< "fo.margin-left"
  std::string_view keywords;  ///< words that are values too, between spaces
  std::uint16_t kinds = 0;    ///< bits of `ValueKinds`
  bool isShareOfParent = false;
  bool isInherited = true;
  bool prefersPoints = false;
  bool isToggle = false;

 private:
  static consteval std::uint16_t kindOfLetter(char letter) {
    const std::size_t bit = kKindLetters.find(letter);
    if (bit == std::string_view::npos) throw "no kind of value has this letter";
    return static_cast<std::uint16_t>(1U << bit);
  }
};

/// The rows of one property element.
struct PropertyGroup {
  std::string_view name;  // "paragraph"
  std::span<const PropertyRow> rows;
};

std::span<const PropertyGroup> propertyGroups();

/// The rows of style:graphic-properties, which are as many as those of all others but text.
std::span<const PropertyRow> graphicPropertyRows();

/// What ECMA-376 part 1, chapter 17 knows, under names of its own beside those of OpenDocument.
std::span<const PropertyGroup> wordPropertyGroups();

}  // namespace zt
