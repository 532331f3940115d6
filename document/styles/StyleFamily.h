// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// The families of styles of OpenDocument, and the two kinds of list styles as families of their own.
enum class StyleFamily : std::uint8_t {
  paragraph,
  text,
  table,
  tableColumn,
  tableRow,
  tableCell,
  section,
  graphic,
  presentation,
  drawingPage,
  chart,
  ruby,
  list,       ///< list styles and outline styles
  listLevel,  ///< their levels
  other       ///< a family that OpenDocument does not know
};

inline constexpr std::size_t kStyleFamilyCount = 15;
inline constexpr std::array kStyleFamilies = {
    StyleFamily::paragraph,    StyleFamily::text,        StyleFamily::table,   StyleFamily::tableColumn,
    StyleFamily::tableRow,     StyleFamily::tableCell,   StyleFamily::section, StyleFamily::graphic,
    StyleFamily::presentation, StyleFamily::drawingPage, StyleFamily::chart,   StyleFamily::ruby,
    StyleFamily::list,         StyleFamily::listLevel,   StyleFamily::other};

/// The name of a family as files write it: "table-cell".
std::string_view familyName(StyleFamily family);

/// The family that a style:family attribute names: `other` for a name that is not known, none for
/// one that no family can have (empty, with a colon, or the names that list styles go under here).
std::optional<StyleFamily> familyWithName(std::string_view name);

/// The identifier of a named style, such as "paragraph:Standard". Two families may use one name.
std::string styleIdentifier(std::string_view family, std::string_view name);

/// The identifier of the root style of a family: its name alone, which no named style can have.
std::string rootIdentifier(std::string_view family);

}  // namespace zt
