// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/writing/StyleDifference.h>
#include <opendocument/writing/StyleElement.h>

#include <string>
#include <vector>

namespace zt {

/// What styles say, as elements of one part.
class StyleWriter {
 public:
  StyleWriter(ElementEdits& edits, const StyleDifference& difference, std::size_t part)
      : mEdits(edits), mDifference(difference), mPart(part) {}

  /// Edits the element of a style or list style.
  void edit(const PlacedElement& element, const StyleDifference::Element& change);
  /// Elements of new styles, with standard prefixes.
  [[nodiscard]] std::string newStyles(const std::vector<const OdfStyle*>& styles) const;

 private:
  struct Property;  // one own value with the place that its key names

  void editNames(const PlacedElement& element, const StyleAsRead& before);
  void editValues(const PlacedElement& element, const StyleAsRead& before, std::string_view ownGroup);
  void expandShorthand(const PlacedElement& properties, const std::string& group, const PropertyMap& now,
                       std::vector<PropertyKey>& changed);
  [[nodiscard]] std::string newStyle(const OdfStyle& style) const;
  [[nodiscard]] std::string textOf(const OdfStyle& style, PropertyKey key, const NSObject& value) const;
  static Property propertyFor(PropertyKey key, const NSObject* value);

  ElementEdits& mEdits;
  const StyleDifference& mDifference;
  std::size_t mPart;
};

}  // namespace zt
