// SPDX-License-Identifier: MIT
#pragma once

#include <document/styles/OdfStyle.h>

namespace zt {

/// What the styles of drawn shapes have in common. Files store how opaque a fill is; people set how
/// transparent it is. So the transparency is a derived property: 30% is stored as an opacity of 70%,
/// and reads as 30% wherever the opacity is stored or inherited.
class ShapeStyle : public OdfStyle {
 public:
  bool isDerivedProperty(PropertyKey key) const override;
  bool isSourceProperty(PropertyKey key) const override;
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override;
  std::vector<PropertyKey> derivedPropertiesForProperty(PropertyKey key) const override;
  Ref<NSObject> deriveValueForProperty(PropertyKey key) const override;
  /// Removes the opacity.
  void removeDerivedValueForProperty(PropertyKey key) override;
  /// A transparency replaces an opacity in the same map.
  void convertToTruePropertyMap(PropertyMap& map) const override;
  void convertToDerivedPropertyMap(PropertyMap* map) const override;

 protected:
  ShapeStyle() = default;
  ~ShapeStyle() override = default;
};

/// The families whose styles are shape styles.
constexpr bool isShapeFamily(StyleFamily family) {
  return family == StyleFamily::graphic || family == StyleFamily::presentation || family == StyleFamily::chart;
}

}  // namespace zt
