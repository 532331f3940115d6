// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/ElementEdits.h>
#include <opendocument/writing/StyleDifference.h>

#include <optional>
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
  /// The element of a list with all its levels, with standard prefixes.
  [[nodiscard]] std::string newList(const OdfStyle& list) const;
  /// Elements of new styles, with standard prefixes.
  [[nodiscard]] std::string newStyles(const std::vector<const OdfStyle*>& styles) const;

 private:
  struct Property;    // one own value with the place that its key names
  struct Properties;  // several of them, as they stand in a new element
  using Elements = std::vector<const PlacedElement*>;

  void editNames(const PlacedElement& element, const StyleAsRead& before);
  void editValues(const PlacedElement& element, const StyleAsRead& before, std::string_view ownGroup);
  void expandShorthand(const PlacedElement& properties, const std::string& group, const PropertyMap& now,
                       std::vector<PropertyKey>& changed);
  struct Edit;  // of the values of one element
  void editValue(const Edit& edit, const Elements& there, PropertyKey key, Properties& added);
  void replaceChildren(const Elements& there, const Property& property, const std::string& text);
  void setAttribute(const Elements& there, const std::string& prefix, const std::string& name,
                    const std::optional<std::string>& value);
  void addPropertyElement(const PlacedElement& element, const std::string& group, const std::string& text);
  [[nodiscard]] std::string newStyle(const OdfStyle& style) const;
  [[nodiscard]] Properties propertiesOf(const OdfStyle& style, std::string_view ownGroup) const;
  [[nodiscard]] std::string textOf(const OdfStyle& style, PropertyKey key, const NSObject& value) const;
  static Property propertyFor(PropertyKey key, const NSObject* value);

  ElementEdits& mEdits;
  const StyleDifference& mDifference;
  std::size_t mPart;
};

}  // namespace zt
