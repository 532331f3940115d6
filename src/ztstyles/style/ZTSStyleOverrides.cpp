// SPDX-License-Identifier: MIT

// Minimal override maps, comparing styles property by property, and handing a style over to another.

#include <platform/NSNull.h>
#include <platform/ZTFirstFailure.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

}  // namespace

Ref<PropertyMap> ZTSStyle::overridePropertyMapWithPropertyMap(const PropertyMap* wanted, const PropertyMap* overrides,
                                                              bool canCollapse) const {
  const auto countOf = [](const PropertyMap* map) { return map != nullptr ? map->count() : 0; };
  const std::size_t own = isAnonymous() && mLocalPropertyMap ? mLocalPropertyMap->count() : 0;
  Ref<PropertyMap> result = PropertyMap::make(own + countOf(wanted) + countOf(overrides));
  p_collectOverrides(*result, wanted, overrides, canCollapse);
  return result;
}

// The candidates are never gathered in a map of their own: the own entries and those of `wanted` are walked one
// after the other, a key that both have only the first time. Entries are copied out one by one, and bounds asked
// anew, since a value's or a style's own code runs in between and may change what is walked.
void ZTSStyle::p_collectOverrides(PropertyMap& result, const PropertyMap* wanted, const PropertyMap* overrides,
                                  bool canCollapse) const {
  Ref<const ZTSStyle> base(this);
  Ref<const PropertyMap> own;
  if (isAnonymous()) {
    base = parent();
    if (!base) {
      ZT_REPORT("overridePropertyMapWithPropertyMap:overridePropertyMap:canCollapse:", this, kSourceFile,
                "Cannot create variation of anonymous style <%p> with no parent.", address(this));
    }
    own = overridePropertyMap();
    if (own && !canCollapse) result.addEntriesFrom(*own);
  }
  if (overrides != nullptr) result.addEntriesFrom(*overrides);

  const auto keepUnlessInherited = [&](PropertyKey key, const Ref<NSObject>& value) {
    if (result.contains(key)) return;
    const Ref<NSObject> inherited = base ? base->valueForProperty(key) : Ref<NSObject>();
    if (!value->isEqual(inherited ? inherited.get() : NSNull::null())) result.set(key, value);
  };
  const PropertyMap* candidates = canCollapse ? own.get() : nullptr;
  if (candidates != nullptr) {
    for (std::size_t index = 0; index < candidates->count(); ++index) {
      const PropertyMap::Entry entry = candidates->at(index);
      NSObject* newer = wanted != nullptr ? wanted->find(entry.key) : nullptr;
      keepUnlessInherited(entry.key, newer != nullptr ? Ref<NSObject>(newer) : entry.value);
    }
  }
  if (wanted == nullptr) return;
  for (std::size_t index = 0; index < wanted->count(); ++index) {
    const PropertyMap::Entry entry = wanted->at(index);
    if (candidates == nullptr || !candidates->contains(entry.key)) keepUnlessInherited(entry.key, entry.value);
  }
}

void ZTSStyle::collapseOverriddenPropertyValues() {
  const Ref<ZTSStyle> parent(this->parent());
  if (isLocked() || !parent) return;
  const Ref<ZTSStyle> self(this);
  // What is stored, not what a class shows: a shown value that equals the parent's may be computed from a stored one
  // that does not.
  const Ref<PropertySet> inherited = PropertySet::make();
  const Ref<PropertySet> stored = storedKeys();
  for (PropertyKey key : stored->keys()) {
    if (sameOrEqual(valueForProperty(key).get(), parent->valueForProperty(key).get())) inherited->add(key);
  }
  if (!inherited->isEmpty()) removeValuesForProperties(*inherited);
}

void ZTSStyle::clearOverriddenPropertyValues() {
  if (!isLocked()) removeValuesForProperties(*storedKeys());
}

Ref<PropertySet> ZTSStyle::storedKeys() const {
  return mLocalPropertyMap ? mLocalPropertyMap->keySet() : PropertySet::make();
}

Ref<PropertySet> ZTSStyle::compareProperties(const ZTSStyle& other) const {
  const Ref<PropertySet> shared = inspectableProperties().copy();
  const Ref<PropertySet> different = shared->copy();
  different->unite(other.inspectableProperties());
  shared->intersect(other.inspectableProperties());
  different->subtract(*shared);
  shared->forEach([&](PropertyKey key) {
    if (!isEqualToStyleForProperty(other, key)) different->add(key);
  });
  return different->isEmpty() ? Ref<PropertySet>() : different;
}

bool ZTSStyle::isEqualToStyleForProperty(const ZTSStyle& other, PropertyKey key) const {
  return sameOrEqual(valueForProperty(key).get(), other.valueForProperty(key).get());
}

void ZTSStyle::replaceWithStyle(ZTSStyle* other) {
  if (other == nullptr || other == this || &other->classObject() != &classObject()) return;
  const Ref<ZTSStyle> self(this);
  const Ref<ZTSStyle> replacement(other);
  ZTFirstFailure failure;
  makeChildrenPerform(
      [&](ZTSStyle& child) { failure.attempt([&] { child.setParentIdentifier(replacement->identifier()); }); });
  // Aggregates among the observers are held, so that each is told, whatever the others do. Of an observer that is
  // no style nothing is known once it has left.
  std::vector<std::pair<ZTSStyleObserver*, Ref<ZTSStyle>>> observers;
  for (ZTSStyleObserver* observer : mObservers.allObjects()) {
    observers.emplace_back(observer, retainIfAlive(dynamic_cast<ZTSStyle*>(observer)));
  }
  for (const auto& [observer, style] : observers) {
    if (!style && !mObservers.containsObject(observer)) continue;
    failure.attempt([&, told = observer] { told->didReplaceStyleWithStyle(this, replacement.get()); });
  }
  failure.rethrow();
}

}  // namespace zt
