// SPDX-License-Identifier: MIT
#include <document/styles/StyleFamily.h>

namespace zt {

namespace {

constexpr std::array<std::string_view, kStyleFamilyCount> kNames = {
    "paragraph",    "text",         "table", "table-column", "table-row", "table-cell", "section", "graphic",
    "presentation", "drawing-page", "chart", "ruby",         "list",      "list-level", "other"};

}  // namespace

std::string_view familyName(StyleFamily family) { return kNames.at(static_cast<std::size_t>(family)); }

std::optional<StyleFamily> familyWithName(std::string_view name) {
  constexpr std::size_t kLongestName = 100;
  if (name.empty() || name.size() > kLongestName || name.find(':') != std::string_view::npos || name == "list" ||
      name == "list-level" || name == "outline") {
    return std::nullopt;
  }
  for (const StyleFamily family : kStyleFamilies) {
    if (familyName(family) == name) return family;
  }
  return StyleFamily::other;
}

std::string styleIdentifier(std::string_view family, std::string_view name) {
  std::string identifier(family);
  return identifier.append(1, ':').append(name);
}

std::string rootIdentifier(std::string_view family) { return std::string(family); }

}  // namespace zt
