// SPDX-License-Identifier: MIT

// The translation between derived and stored properties around the inherited storage.

#include <platform/NSNull.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSDerivingStyle.h>
#include <ztstyles/ZTSStyleClassOf.h>

#include <algorithm>
#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSDerivingStyle";

}  // namespace

const ZTSStyleClass& ZTSDerivingStyle::styleClass() {
  static const auto* object =
      new ZTSStyleClassOf<ZTSDerivingStyle>("ZTSDerivingStyle", ZTSAggregateStyle::styleClass());
  return *object;
}

const ZTSStyleClass& ZTSDerivingStyle::classObject() const { return styleClass(); }

bool ZTSDerivingStyle::initWithName(const ZTSStyleFields& fields) {
  ZTSStyleFields withoutMap = fields;
  withoutMap.overridePropertyMap = nullptr;
  if (!ZTSAggregateStyle::initWithName(withoutMap)) return false;
  if (fields.overridePropertyMap != nullptr) setValuesForProperties(*fields.overridePropertyMap);
  return true;
}

// ---- Hooks

bool ZTSDerivingStyle::isDerivedProperty(PropertyKey) const { return false; }
bool ZTSDerivingStyle::isSourceProperty(PropertyKey) const { return false; }
PropertyKey ZTSDerivingStyle::sourcePropertyForProperty(PropertyKey) const { return {}; }
std::vector<PropertyKey> ZTSDerivingStyle::derivedPropertiesForProperty(PropertyKey) const { return {}; }
Ref<NSObject> ZTSDerivingStyle::deriveValueForProperty(PropertyKey) const { return {}; }
void ZTSDerivingStyle::removeDerivedValueForProperty(PropertyKey) {}
void ZTSDerivingStyle::convertToTruePropertyMap(PropertyMap&) const {}
void ZTSDerivingStyle::convertToDerivedPropertyMap(PropertyMap*) const {}

// ---- Conversion of maps

Ref<const PropertyMap> ZTSDerivingStyle::truePropertyMapFromPropertyMap(Ref<const PropertyMap> map) const {
  if (!map ||
      std::none_of(map->begin(), map->end(), [this](const auto& entry) { return isDerivedProperty(entry.key); }))
    return map;
  const Ref<PropertyMap> converted = map->copy();
  // A map that shows derived properties beside their sources says the same twice, and where several sources come to
  // one derived value, the source says it better.
  converted->removeIf([&](const PropertyMap::Entry& entry) {
    if (!isDerivedProperty(entry.key)) return false;
    const PropertyKey source = sourcePropertyForProperty(entry.key);
    return source && source != entry.key && map->contains(source);
  });
  convertToTruePropertyMap(*converted);
  return converted;
}

Ref<const PropertyMap> ZTSDerivingStyle::derivedPropertyMapFromPropertyMap(Ref<const PropertyMap> map) const {
  if (!map || std::none_of(map->begin(), map->end(), [this](const auto& entry) { return isSourceProperty(entry.key); }))
    return map;
  const Ref<PropertyMap> converted = map->copy();
  convertToDerivedPropertyMap(converted.get());
  return converted;
}

// ---- Lookup

Ref<NSObject> ZTSDerivingStyle::valueForProperty(PropertyKey key) const {
  return isDerivedProperty(key) ? deriveValueForProperty(key) : ZTSAggregateStyle::valueForProperty(key);
}

Ref<NSObject> ZTSDerivingStyle::overrideValueForProperty(PropertyKey key) const {
  return isDerivedProperty(key) && overridesProperty(key) ? deriveValueForProperty(key)
                                                          : ZTSAggregateStyle::overrideValueForProperty(key);
}

bool ZTSDerivingStyle::overridesProperty(PropertyKey key) const {
  return ZTSAggregateStyle::overridesProperty(sourcePropertyForProperty(key));
}

bool ZTSDerivingStyle::definesProperty(PropertyKey key) const {
  return ZTSAggregateStyle::definesProperty(sourcePropertyForProperty(key));
}

Ref<const PropertyMap> ZTSDerivingStyle::overridePropertyMap() const {
  return derivedPropertyMapFromPropertyMap(ZTSAggregateStyle::overridePropertyMap());
}

Ref<PropertyMap> ZTSDerivingStyle::propertyMap() const {
  Ref<PropertyMap> map = ZTSAggregateStyle::propertyMap();
  convertToDerivedPropertyMap(map.get());
  return map;
}

Ref<PropertyMap> ZTSDerivingStyle::overridePropertyMapWithPropertyMap(const PropertyMap* wanted,
                                                                      const PropertyMap* overrides,
                                                                      bool canCollapse) const {
  const Ref<const PropertyMap> trueWanted = truePropertyMapFromPropertyMap(Ref<const PropertyMap>(wanted));
  const Ref<const PropertyMap> trueOverrides = truePropertyMapFromPropertyMap(Ref<const PropertyMap>(overrides));
  Ref<PropertyMap> map =
      ZTSAggregateStyle::overridePropertyMapWithPropertyMap(trueWanted.get(), trueOverrides.get(), canCollapse);
  // The own map, which an anonymous style contributes, shows what the old sources derive.
  map->removeIf([this](const PropertyMap::Entry& entry) { return isDerivedProperty(entry.key); });
  if (std::any_of(map->begin(), map->end(), [this](const auto& entry) { return isSourceProperty(entry.key); })) {
    convertToDerivedPropertyMap(map.get());
  }
  return map;
}

// ---- Changes of own values

void ZTSDerivingStyle::entriesWillChange(ZTSEntriesChange& change) {
  const Ref<ZTSDerivingStyle> self(this);
  if (change.isRemoval) {
    keepTrueKeys(change);
  } else if (change.values) {
    change.values = truePropertyMapFromPropertyMap(change.values);
  } else if (isDerivedProperty(change.key)) {
    if (!change.value) change.value.reset(NSNull::null());
    const Ref<PropertyMap> map = PropertyMap::with({{change.key, change.value}});
    convertToTruePropertyMap(*map);
    change.values = map;
  }
  ZTSAggregateStyle::entriesWillChange(change);
}

/// A derived property has no entry: its class removes what it is computed from, unless the change only stores or is
/// one of a locked style.
void ZTSDerivingStyle::keepTrueKeys(ZTSEntriesChange& change) {
  const auto removeDerived = [&](PropertyKey key) {
    if (change.way != ZTSEntriesChange::Way::lockedStyle) return removeDerivedValueForProperty(key);
    ZT_REPORT("lockedStyleRemoveValuesForProperties:notificationFlags:", this, kSourceFile,
              "Can't remove the value of a derived property %@.", key);
  };
  if (!change.keys) {
    if (change.way == ZTSEntriesChange::Way::unconditional || !isDerivedProperty(change.key)) return;
    const PropertyKey derived = std::exchange(change.key, PropertyKey());
    return removeDerived(derived);
  }
  Ref<PropertySet> stored;
  for (PropertyKey key : change.keys->keys()) {
    if (!isDerivedProperty(key)) continue;
    if (!stored) stored = change.keys->copy();
    stored->remove(key);
    removeDerived(key);
  }
  if (stored) change.keys = stored;
}

// ---- Validation, archive

void ZTSDerivingStyle::validate() const {
  ZTSAggregateStyle::validate();
  const Ref<const PropertyMap> own = ZTSAggregateStyle::overridePropertyMap();
  if (!own) return;
  const Ref<const PropertyMap> stored = own->copy();  // who hears of a finding may change the map
  for (const PropertyMap::Entry& entry : *stored) {
    if (!isDerivedProperty(entry.key)) continue;
    ZT_REPORT("validate", this, kSourceFile, "Found derived property %@ in property map.", entry.key);
  }
}

Ref<NSObject> ZTSDerivingStyle::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) {
  Ref<NSObject> kept = ZTSAggregateStyle::initMoreWithXMLUnarchiver(unarchiver, node);
  if (kept != this) return kept;
  const Ref<const PropertyMap> stored = ZTSAggregateStyle::overridePropertyMap();
  const Ref<const PropertyMap> converted = truePropertyMapFromPropertyMap(stored);
  if (converted == stored) return kept;
  for (const PropertyMap::Entry& entry : *stored) {
    if (!isDerivedProperty(entry.key)) continue;
    ZTULog_Fn(kZTULogNotice, kSourceFile, "Converted derived property %@ of %@ on reading.", entry.key,
              shortDescription());
  }
  p_setPropertyMap(converted->copy());
  return kept;
}

}  // namespace zt
