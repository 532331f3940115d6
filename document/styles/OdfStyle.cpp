// SPDX-License-Identifier: MIT
#include <document/styles/OdfStyle.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

#include <deque>
#include <optional>

namespace zt {

namespace {

// What a chain of shares comes to on top of a value of some ancestor.
Ref<NSObject> resolved(const std::optional<Percentage>& share, Ref<NSObject> base) {
  if (!share) return isNull(base.get()) ? Ref<NSObject>() : base;
  if (const LengthValue* length = asLength(base.get())) return make<LengthValue>(shareOf(length->length(), *share));
  if (const PercentageValue* percentage = asPercentage(base.get())) {
    return make<PercentageValue>(shareOf(percentage->percentage(), *share));
  }
  return make<PercentageValue>(*share);
}

}  // namespace

const ZTSStyleClass& OdfStyle::styleClass() {
  class AbstractClass : public ZTSStyleClass {
    using ZTSStyleClass::ZTSStyleClass;
  };
  static const auto* object = new AbstractClass("OdfStyle", &ZTSDerivingStyle::styleClass(), &typeid(OdfStyle));
  return *object;
}

bool OdfStyle::initWithName(const ZTSStyleFields& fields) {
  const Ref<const PropertyMap> stored =
      truePropertyMapFromPropertyMap(Ref<const PropertyMap>(fields.overridePropertyMap));
  ZTSStyleFields storedFields = fields;
  storedFields.overridePropertyMap = stored.get();
  return ZTSAggregateStyle::initWithName(storedFields);  // NOLINT(bugprone-parent-virtual-call): taken as they are
}

std::string OdfStyle::familyName() const {
  if (family() == StyleFamily::other) {
    const Ref<NSObject> value = valueForProperty(keys::otherFamily());
    if (const NSString* name = NSString::from(value.get())) return std::string(name->view());
  }
  return std::string(zt::familyName(family()));
}

Ref<NSObject> OdfStyle::valueForProperty(PropertyKey key) const {
  if (isDerivedProperty(key)) return deriveValueForProperty(key);
  const PropertyRule* rule = propertyRule(key);
  const bool isInherited = rule == nullptr || rule->isInherited;
  const bool isShare = rule != nullptr && rule->isShareOfParent;
  std::optional<Percentage> share;
  for (const ZTSStyle* style = this; style != nullptr; style = style->parent()) {
    NSObject* own = style->p_overrideValueForProperty(key);
    if (own == nullptr) {
      if (!isInherited) break;
      continue;
    }
    const PercentageValue* percentage = isShare ? asPercentage(own) : nullptr;
    if (percentage == nullptr) return resolved(share, Ref<NSObject>(own));
    share = share ? shareOf(percentage->percentage(), *share) : percentage->percentage();
  }
  Ref<NSObject> value = resolved(share, {});
  return value != nullptr ? value : defaultValueForNilStyleProperty(key);
}

Ref<PropertyMap> OdfStyle::propertyMap() const {
  std::vector<Ref<const PropertyMap>> maps;  // nearest first
  for (const ZTSStyle* style = this; style != nullptr; style = style->parent()) {
    if (Ref<const PropertyMap> own = style->overridePropertyMap()) maps.push_back(std::move(own));
  }
  if (maps.empty()) return {};
  Ref<PropertyMap> flat = maps.back()->copy();
  for (auto map = maps.rbegin() + 1; map != maps.rend(); ++map) flat->addEntriesFrom(**map);
  return flat;
}

bool OdfStyle::validateValueForProperty(NSObject* value, PropertyKey key) const {
  const auto& styleClass = classObject();
  if (!styleClass.isValidProperty(key)) return false;
  if (value == nullptr || isNull(value)) return true;
  if (isReferencedStyleProperty(key)) return asStyle(value) != nullptr;
  const PropertyRule* rule = propertyRule(key);
  if (rule != nullptr && (rule->kinds & kStyle) != 0) return NSString::from(value) != nullptr;
  return takesValue(rule, *value);
}

const OdfStyle* asOdfStyle(const NSObject* object) noexcept {
  return object != nullptr && object->classObject().isKindOf(OdfStyle::styleClass())
             ? static_cast<const OdfStyle*>(asStyle(object))
             : nullptr;
}

OdfStyle* asOdfStyle(NSObject* object) noexcept {
  return const_cast<OdfStyle*>(asOdfStyle(static_cast<const NSObject*>(object)));
}

const PropertySet& FamilyRegistry::properties() const {
  if (const PropertySet* current = mCurrent.load(std::memory_order_acquire)) return *current;
  extend({});
  return *mCurrent.load(std::memory_order_acquire);
}

void FamilyRegistry::extend(const std::vector<PropertyKey>& keys) const {
  const std::lock_guard lock(mMutex);
  const PropertySet* current = mCurrent.load(std::memory_order_acquire);
  bool isNew = current == nullptr;
  for (const PropertyKey key : keys) isNew = isNew || !current->contains(key);
  if (!isNew) return;
  const Ref<PropertySet> next = current != nullptr ? current->copy() : PropertySet::with(knownProperties(mFamily));
  for (const PropertyKey key : keys) next->add(key);
  mAnswered.push_back(next);
  mCurrent.store(next.get(), std::memory_order_release);
}

const FamilyRegistry& FamilyRegistry::of(StyleFamily family) {
  static const auto* registries = [] {
    auto* all = new std::deque<FamilyRegistry>;
    for (const StyleFamily each : kStyleFamilies) all->emplace_back(each);
    return all;
  }();
  return registries->at(static_cast<std::size_t>(family));
}

Ref<OdfStyle> makeFamilyStyle(StyleFamily family, const ZTSStyleFields& fields) {
  return Ref<OdfStyle>(asOdfStyle(familyStyleClass(family).makeStyle(fields).get()));
}

}  // namespace zt
