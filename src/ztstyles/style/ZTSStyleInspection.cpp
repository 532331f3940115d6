// SPDX-License-Identifier: MIT

// What an inspector asks. A single style ignores the scope and never has mixed state.

#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

const PropertySet& ZTSStyle::inspectableProperties() const { return classObject().properties(); }

const PropertySet* ZTSStyle::mutableProperties() const { return isLocked() ? nullptr : &inspectableProperties(); }

bool ZTSStyle::canMutateProperty(PropertyKey key) const {
  const PropertySet* keys = mutableProperties();
  return keys != nullptr && keys->contains(key);
}

Ref<NSObject> ZTSStyle::valueForPropertyWithScope(PropertyKey key, NSObject*) const { return valueForProperty(key); }

std::optional<std::vector<Ref<NSObject>>> ZTSStyle::valuesForProperty(PropertyKey key) const {
  Ref<NSObject> value = valueForProperty(key);
  if (!value) return std::nullopt;
  return std::vector<Ref<NSObject>>{std::move(value)};
}

std::optional<std::vector<Ref<NSObject>>> ZTSStyle::valuesForPropertyWithScope(PropertyKey key, NSObject*) const {
  return valuesForProperty(key);
}

std::vector<std::pair<PropertyKey, std::vector<Ref<NSObject>>>> ZTSStyle::valuesForPropertiesWithScope(
    const PropertySet& keys, NSObject* scope) const {
  std::vector<std::pair<PropertyKey, std::vector<Ref<NSObject>>>> all;
  for (PropertyKey key : keys.keys()) {
    if (auto values = valuesForPropertyWithScope(key, scope)) all.emplace_back(key, std::move(*values));
  }
  return all;
}

bool ZTSStyle::isStateMixedForProperty(PropertyKey) const { return false; }

Ref<PropertyMap> ZTSStyle::isStateMixedForPropertiesWithScope(const PropertySet& keys, NSObject*) const {
  Ref<PropertyMap> all = PropertyMap::make(keys.count());
  for (PropertyKey key : keys.keys()) all->set(key, NSNumber::withBool(isStateMixedForProperty(key)));
  return all;
}

}  // namespace zt
