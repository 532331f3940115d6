// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The tables behind PropertyRules.h: one row for each attribute of OpenDocument, and each element or attribute of
/// WordprocessingML, that is understood.

#include <span>
#include <string_view>

namespace zt {

/// A row. `kinds` has one letter for each kind: L length, P percentage, ^ a percentage that is a
/// share of the parent's value, C colour, B boolean, I integer, N number, T any text, X element,
/// S style, . lengths in points, ! not inherited, ~ a toggle.
struct PropertyRow {
  std::string_view name;  // "fo.margin-left"
  std::string_view kinds;
  std::string_view keywords = {};
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
