// SPDX-License-Identifier: MIT

// The cascade. A level whose class leaves the reading operations alone is passed in a loop: the mask of its own
// keys says without touching its map that it has no entry. The first level that overrides is called.

#include <platform/NSNull.h>
#include <platform/ZTNesting.h>
#include <ztstyles/ZTSStyle.h>

#include <boost/container/small_vector.hpp>

namespace zt {

namespace {

/// What an entry means to a reader: the null sentinel is no value.
Ref<NSObject> effective(NSObject* entry) { return Ref<NSObject>(isNull(entry) ? nullptr : entry); }

[[gnu::noinline]] Ref<NSObject> valueOfOverriding(const ZTSStyle& style, PropertyKey key) {
  NestingGuard guard("valueForProperty:", Nesting::lookup);
  return style.valueForProperty(key);
}

}  // namespace

// Two loops: the first one calls nothing before its last step, so that it needs no room on the stack and a hit in a
// small map costs a few dozen instructions. The first large map that may have the key ends it.
Ref<NSObject> ZTSStyle::valueForProperty(PropertyKey key) const {
  const std::uint64_t bit = key.bit();
  for (const ZTSStyle* style = this;;) {
    if ((style->mKeyMask & bit) != 0) {
      const PropertyMap& own = *style->mLocalPropertyMap;
      if (own.hasTable()) return style->valueThroughTables(key);
      if (NSObject* entry = own.findByWalking(key)) return effective(entry);
    }
    style = style->mParent.get();
    if (style == nullptr) return {};
    if (!style->isPlain(ZTSStyleClass::plainReading)) return valueOfOverriding(*style, key);
  }
}

Ref<NSObject> ZTSStyle::valueThroughTables(PropertyKey key) const {
  for (const ZTSStyle* style = this;;) {
    if (NSObject* entry = style->p_overrideValueForProperty(key)) return effective(entry);
    style = style->mParent.get();
    if (style == nullptr) return {};
    if (!style->isPlain(ZTSStyleClass::plainReading)) return valueOfOverriding(*style, key);
  }
}

NSObject* ZTSStyle::p_valueForProperty(PropertyKey key) const noexcept {
  for (const ZTSStyle* style = this; style != nullptr; style = style->mParent.get()) {
    if (NSObject* own = style->p_overrideValueForProperty(key)) return own;
  }
  return nullptr;
}

Ref<NSObject> ZTSStyle::overrideValueForProperty(PropertyKey key) const {
  return Ref<NSObject>(p_overrideValueForProperty(key));
}

bool ZTSStyle::overridesProperty(PropertyKey key) const { return p_overrideValueForProperty(key) != nullptr; }

bool ZTSStyle::definesProperty(PropertyKey key) const {
  const ZTSStyle* style = this;
  for (;;) {
    if (style->p_overrideValueForProperty(key) != nullptr) return true;
    style = style->mParent.get();
    if (style == nullptr) return false;
    if (!style->isPlain(ZTSStyleClass::plainReading)) break;
  }
  NestingGuard guard("definesProperty:", Nesting::lookup);
  return style->definesProperty(key);
}

Ref<const PropertyMap> ZTSStyle::overridePropertyMap() const {
  return overridesAnyProperty() ? Ref<const PropertyMap>(mLocalPropertyMap) : Ref<const PropertyMap>();
}

Ref<PropertyMap> ZTSStyle::propertyMap() const {
  boost::container::small_vector<const ZTSStyle*, 16> setters;  // nearest first
  std::size_t entries = 0;
  const ZTSStyle* style = this;
  while (style != nullptr && (style == this || style->isPlain(ZTSStyleClass::plainReading))) {
    if (style->overridesAnyProperty()) {
      setters.push_back(style);
      entries += style->mLocalPropertyMap->count();
    }
    style = style->mParent.get();
  }
  Ref<PropertyMap> flat;
  if (style != nullptr) {
    NestingGuard guard("propertyMap", Nesting::lookup);
    flat = style->propertyMap();
  }
  while (!setters.empty()) {
    const PropertyMap& own = *setters.back()->mLocalPropertyMap;
    setters.pop_back();
    if (flat) {
      flat->addEntriesFrom(own);
    } else {
      // Room for all that may come, but not for a long chain's repetitions of the same few keys.
      flat = own.copy(std::min(entries - own.count(), std::size_t{256}));
    }
  }
  return flat;
}

std::optional<ZTSStyleSet> ZTSStyle::referencedStyles() const { return std::nullopt; }
std::optional<ZTSStyleSet> ZTSStyle::implicitlyReferencedStyles() const { return std::nullopt; }
std::optional<ZTSStyleSet> ZTSStyle::recursivelyReferencedStyles() const { return std::nullopt; }

}  // namespace zt
