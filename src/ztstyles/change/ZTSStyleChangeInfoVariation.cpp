// SPDX-License-Identifier: MIT

// The style that looks as the changed one did before.

#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStylesheet.h>

namespace zt {

Ref<ZTSStyle> ZTSStyleChangeInfo::unchangedVariation() const {
  if (mUnchangedVariation || !mStyle || mStyle->stylesheet() == nullptr) return mUnchangedVariation;
  const Ref<const ZTSStyleChangeInfo> self(this);
  const Ref<ZTSStylesheet> stylesheet(mStyle->stylesheet());
  Ref<PropertyMap> values;
  if (mChangedProperties) values = unchangedPropertyMapForProperties(*mChangedProperties);
  if (values) {
    values->removeIf([&](const PropertyMap::Entry& entry) {
      const ZTSStyle* referenced = asStyle(entry.value.get());
      return referenced != nullptr && referenced->stylesheet() != stylesheet.get();
    });
  }
  Ref<ZTSStyle> variation = stylesheet->variationOfStyle(
      mStyle.get(), {.propertyMap = values.get(), .isLocked = mStyle->isLocked(), .canCollapse = false});
  // Adding a style tells observers, one of whom may have asked this record meanwhile.
  if (!mUnchangedVariation) mUnchangedVariation = std::move(variation);
  return mUnchangedVariation;
}

}  // namespace zt
