// SPDX-License-Identifier: MIT
#include <document/styles/ShapeStyle.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>

namespace zt {

namespace {

/// The transparency that an opacity comes to, and the other way round. What is no percentage stays
/// as it is: none, explicitly no value, and what is refused when it is to be stored.
Ref<NSObject> complement(Ref<NSObject> value) {
  const PercentageValue* share = asPercentage(value.get());
  if (share == nullptr) return value;
  return make<PercentageValue>(Percentage{Percentage::kWhole - share->percentage().units});
}

}  // namespace

bool ShapeStyle::isDerivedProperty(PropertyKey key) const { return key == keys::transparency(); }
bool ShapeStyle::isSourceProperty(PropertyKey key) const { return key == keys::opacity(); }

PropertyKey ShapeStyle::sourcePropertyForProperty(PropertyKey key) const {
  return key == keys::transparency() ? keys::opacity() : key;
}

std::vector<PropertyKey> ShapeStyle::derivedPropertiesForProperty(PropertyKey key) const {
  if (key == keys::opacity()) return {keys::transparency()};
  return {};
}

Ref<NSObject> ShapeStyle::deriveValueForProperty(PropertyKey) const {
  return complement(valueForProperty(keys::opacity()));
}

void ShapeStyle::removeDerivedValueForProperty(PropertyKey) { removeValueForProperty(keys::opacity()); }

void ShapeStyle::convertToTruePropertyMap(PropertyMap& map) const {
  if (Ref<NSObject> transparency = map.remove(keys::transparency())) map.set(keys::opacity(), complement(transparency));
}

void ShapeStyle::convertToDerivedPropertyMap(PropertyMap* map) const {
  if (map == nullptr) return;
  if (NSObject* opacity = map->find(keys::opacity()))
    map->set(keys::transparency(), complement(Ref<NSObject>(opacity)));
}

}  // namespace zt
