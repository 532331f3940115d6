// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Names of styles: as people write them, as files do, and where a style's values name other styles as text.

#include <document/styles/OdfStyle.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// A name as files write it: "Text body" becomes "Text_20_body".
std::string encodedStyleName(std::string_view name);

/// The name of an identified style as files write it: its identifier without the family.
std::string_view fileNameOf(const ZTSStyle& identified);

/// A style that a value names as text: the next style, the linked one, those of conditions, drop caps and tab stops.
struct NamedStyle {
  std::string family;
  std::string name;

  bool operator==(const NamedStyle&) const = default;
};

/// What an own value of the style names, in its order.
std::vector<NamedStyle> stylesNamedBy(const OdfStyle& style, PropertyKey key, const NSObject& value);

/// The value with another name for each style that it names, where `renamed` answers one.
Ref<NSObject> valueWithNames(const OdfStyle& style, PropertyKey key, const NSObject& value,
                             const std::function<std::string(const NamedStyle&)>& renamed);

}  // namespace zt
