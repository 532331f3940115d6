// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What this application knows about the properties of styles, those of OpenDocument and of
/// WordprocessingML: which there are, what their values may be, how a value is read from text.

#include <document/styles/StyleFamily.h>
#include <document/styles/StyleValues.h>

#include <platform/PropertyKey.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// What is known about one property.
struct PropertyRule {
  PropertyKey key;
  std::uint16_t kinds = 0;       ///< bits of `ValueKinds`
  std::string_view keywords;     ///< words that are values too, between spaces
  bool isShareOfParent = false;  ///< a percentage is a share of what the parent has
  bool isInherited = true;       ///< false: a style has what it sets itself, or nothing
  bool prefersPoints = false;    ///< how people write its lengths
  bool isToggle = false;         ///< true of two kinds of styles on one text is false again
};

/// "paragraph", "fo", "margin-left" gives `paragraph.fo.margin-left`: a valid XML name.
std::string propertyKeyText(std::string_view group, std::string_view prefix, std::string_view name);

/// What is known about the key; none for an unknown property, whose values are opaque text. Safe
/// across threads. Cost: one hash lookup.
const PropertyRule* propertyRule(PropertyKey key);

/// The known keys of a family: those of the property elements that its styles may hold, and the
/// references that a style carries itself.
std::vector<PropertyKey> knownProperties(StyleFamily family);

/// Reads a value for a property from the text of a file; none if the text says nothing usable. For
/// an unknown property every text is usable, and opaque. Of `kStyle` alone nothing can be read.
Ref<NSObject> readValue(const PropertyRule* rule, std::string_view text);

/// Whether the property takes the value, which is neither none nor the null sentinel.
bool takesValue(const PropertyRule* rule, const NSObject& value);

/// Keys that the application itself asks for.
namespace keys {
PropertyKey listStyle();
PropertyKey masterPage();
PropertyKey nextStyle();
PropertyKey linkedStyle();
PropertyKey otherFamily();                          ///< the family's name, on styles of `StyleFamily::other`
PropertyKey listLevel(std::size_t level);           ///< 1 to 10: the style of a level of a list style
PropertyKey levelTextStyle();                       ///< of a level: the text style of its number or bullet
PropertyKey levelParagraphStyle();                  ///< of a level: the paragraph style that it numbers
PropertyKey listLevelNumber();                      ///< of a paragraph: the level of its list, from 0
const std::vector<PropertyKey>& tableConditions();  ///< of a table style: the styles of its parts ("firstRow", ...)
PropertyKey opacity();                              ///< of a shape's fill, as files store it
PropertyKey transparency();                         ///< of a shape's fill, as people set it: derived from the opacity
inline constexpr std::size_t kListLevels = 10;
}  // namespace keys

}  // namespace zt
