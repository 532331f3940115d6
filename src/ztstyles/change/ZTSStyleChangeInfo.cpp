// SPDX-License-Identifier: MIT

// Records of changes. A record holds everything it points to; cascaded records share the sets in which
// comparisons are remembered.

#include <platform/NSAssertionHandler.h>
#include <platform/ZTClass.h>
#include <ztstyles/ZTSStyle.h>
#include <ztstyles/ZTSStyleChangeInfo.h>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyleChangeInfo";

template <class Described>
std::string describeOrNull(const Described* object) {
  return object != nullptr ? describe(*object) : "(null)";
}

}  // namespace

ZTSStyleChangeInfo::ZTSStyleChangeInfo() = default;
ZTSStyleChangeInfo::~ZTSStyleChangeInfo() = default;

const ZTClass& ZTSStyleChangeInfo::changeInfoClass() {
  static const auto* object = new ZTClass("ZTSStyleChangeInfo", &nsObjectClass(), &typeid(ZTSStyleChangeInfo));
  return *object;
}

const ZTClass& ZTSStyleChangeInfo::classObject() const { return changeInfoClass(); }

Ref<ZTSStyleChangeInfo> ZTSStyleChangeInfo::p_init(ZTSStyle* style, ZTSStyle* originalStyle,
                                                   Ref<const PropertySet> changedProperties,
                                                   Ref<const PropertySet> originalChangedProperties,
                                                   Ref<PropertySet> equalValuedProperties,
                                                   Ref<PropertySet> unequalValuedProperties,
                                                   Ref<const PropertyMap> oldPropertyMap) {
  Ref<ZTSStyleChangeInfo> record(new ZTSStyleChangeInfo);
  record->mStyle = style;
  record->mOriginalStyle = originalStyle;
  record->mChangedProperties = std::move(changedProperties);
  record->mOriginalChangedProperties = std::move(originalChangedProperties);
  record->mEqualValuedProperties = std::move(equalValuedProperties);
  record->mUnequalValuedProperties = std::move(unequalValuedProperties);
  record->mOldPropertyMap = std::move(oldPropertyMap);
  return record;
}

Ref<ZTSStyleChangeInfo> ZTSStyleChangeInfo::init() { return p_init(nullptr, nullptr, {}, {}, {}, {}, {}); }

Ref<ZTSStyleChangeInfo> ZTSStyleChangeInfo::withStyleChangedProperties(ZTSStyle* style,
                                                                       const PropertySet& changedProperties,
                                                                       const PropertyMap* oldPropertyMap) {
  const Ref<const PropertySet> changed = changedProperties.copy();
  return p_init(style, style, changed, changed, {}, {},
                oldPropertyMap != nullptr ? oldPropertyMap->copy() : PropertyMap::make());
}

Ref<ZTSStyleChangeInfo> ZTSStyleChangeInfo::withStyleChangedProperty(ZTSStyle* style, PropertyKey changedProperty,
                                                                     Ref<NSObject> oldValue) {
  const Ref<const PropertySet> changed = PropertySet::with({changedProperty});
  Ref<PropertyMap> old = PropertyMap::make(1);
  if (oldValue && changedProperty) old->set(changedProperty, std::move(oldValue));
  return p_init(style, style, changed, changed, {}, {}, std::move(old));
}

Ref<ZTSStyleChangeInfo> ZTSStyleChangeInfo::cascadedFrom(const ZTSStyleChangeInfo* source, ZTSStyle* style,
                                                         Ref<const PropertySet> changedProperties) {
  if (source == nullptr) {
    constexpr const char* operation = "initCascadedFromStyleChangeInfo:withStyle:changedProperties:";
    const Ref<ZTSStyleChangeInfo> record = init();
    ZT_RAISE(operation, record.get(), kSourceFile,
             "-[ZTSStyleChangeInfo %@] -- Failed to initialize <%p> from nil ZTWPStyleChangeInfo.", operation, record);
  }
  // As p_init would: one of these is made for every style that somebody hears.
  Ref<ZTSStyleChangeInfo> record(new ZTSStyleChangeInfo);
  record->mStyle = style;
  record->mOriginalStyle = source->mOriginalStyle;
  record->mChangedProperties = std::move(changedProperties);
  record->mOriginalChangedProperties = source->mOriginalChangedProperties;
  record->mEqualValuedProperties = source->mEqualValuedProperties;
  record->mUnequalValuedProperties = source->mUnequalValuedProperties;
  record->mOldPropertyMap = source->mOldPropertyMap;
  return record;
}

void ZTSStyleChangeInfo::p_reuseFor(const ZTSStyleChangeInfo& source, ZTSStyle* style,
                                    Ref<const PropertySet> changedProperties) {
  mStyle = style;
  mChangedProperties = std::move(changedProperties);
  if (mEqualValuedProperties != source.mEqualValuedProperties) mEqualValuedProperties = source.mEqualValuedProperties;
  if (mUnequalValuedProperties != source.mUnequalValuedProperties)
    mUnequalValuedProperties = source.mUnequalValuedProperties;
  mUnchangedVariation.reset();
}

ZTSStyle* ZTSStyleChangeInfo::style() const noexcept { return mStyle.get(); }
ZTSStyle* ZTSStyleChangeInfo::originalStyle() const noexcept { return mOriginalStyle.get(); }

Ref<PropertyMap> ZTSStyleChangeInfo::unchangedPropertyMapForProperties(const PropertySet& keys) const {
  const Ref<const ZTSStyleChangeInfo> self(this);
  Ref<PropertyMap> unchanged;
  if (!mChangedProperties) return unchanged;
  // A set of its own: a value's comparison may come back here or change what was handed in.
  const Ref<PropertySet> asked = keys.copy();
  asked->intersect(*mChangedProperties);
  if (mEqualValuedProperties) asked->subtract(*mEqualValuedProperties);
  asked->forEach([&](PropertyKey key) {
    const Ref<NSObject> old(mOldPropertyMap ? mOldPropertyMap->find(key) : nullptr);
    if (!mUnequalValuedProperties || !mUnequalValuedProperties->contains(key)) {
      const Ref<NSObject> current(mOriginalStyle ? mOriginalStyle->p_valueForProperty(key) : nullptr);
      const bool isEqual = sameOrEqual(old.get(), current.get());
      Ref<PropertySet>& found = isEqual ? mEqualValuedProperties : mUnequalValuedProperties;
      if (!found) found = PropertySet::make();
      found->add(key);
      if (isEqual) return;
    }
    if (!old) return;
    if (!unchanged) unchanged = PropertyMap::make(asked->count());
    unchanged->set(key, old);
  });
  return unchanged;
}

std::string ZTSStyleChangeInfo::description() const {
  return format(
      "<%@ %p \n\tstyle=%p \n\toriginalStyle=%p \n\tchangedProperties=%@ \n\toriginalChangedProperties=%@ "
      "\n\tequalValuedProperties=%@ \n\tunequalValuedProperties=%@ \n\toldPropertyMap=%@ \n\tunchangedVariation=%p\n>",
      classObject().name(), address(this), mStyle, mOriginalStyle, describeOrNull(mChangedProperties.get()),
      describeOrNull(mOriginalChangedProperties.get()), describeOrNull(mEqualValuedProperties.get()),
      describeOrNull(mUnequalValuedProperties.get()), describeOrNull(mOldPropertyMap.get()), mUnchangedVariation);
}

}  // namespace zt
