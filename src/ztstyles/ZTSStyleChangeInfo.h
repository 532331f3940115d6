// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/PropertyMap.h>
#include <platform/PropertySet.h>

namespace zt {

class ZTSStyle;

/// One change of property values, on its way from the style where it was made through the styles that
/// inherit to observers and notifications: where it comes from, which keys changed at this level, and
/// the old values at the style where it started. Holds everything that it points to.
///
/// Records that were cascaded from one another share what they have found out about which values
/// really changed, so that each key is compared once per change.
class ZT_EXPORT ZTSStyleChangeInfo final : public NSObject {
 public:
  /// @name Making one
  /// Implemented in ZTSStyleChangeInfo.cpp.
  /// @{

  /// A record that starts at `style` (may be none). The set and the map are copied; no map counts as empty.
  static Ref<ZTSStyleChangeInfo> withStyleChangedProperties(ZTSStyle* style, const PropertySet& changedProperties,
                                                            const PropertyMap* oldPropertyMap);
  /// The same for one key; no old value gives an empty old map.
  static Ref<ZTSStyleChangeInfo> withStyleChangedProperty(ZTSStyle* style, PropertyKey changedProperty,
                                                          Ref<NSObject> oldValue);
  /// The record that `style` passes on: shares everything else with the source. Raises
  /// `NSInternalInconsistencyException` without a source.
  static Ref<ZTSStyleChangeInfo> cascadedFrom(const ZTSStyleChangeInfo* source, ZTSStyle* style,
                                              Ref<const PropertySet> changedProperties);
  /// A record with everything absent.
  static Ref<ZTSStyleChangeInfo> init();
  /// A record with the given fields, held unchanged. The memo sets may be absent.
  static Ref<ZTSStyleChangeInfo> p_init(ZTSStyle* style, ZTSStyle* originalStyle,
                                        Ref<const PropertySet> changedProperties,
                                        Ref<const PropertySet> originalChangedProperties,
                                        Ref<PropertySet> equalValuedProperties,
                                        Ref<PropertySet> unequalValuedProperties,
                                        Ref<const PropertyMap> oldPropertyMap);
  /// @}

  /// The style that changed, or, in a cascaded record, the one that passes the change on. May be none.
  [[nodiscard]] ZTSStyle* style() const noexcept;
  /// The style where the change started. May be none.
  [[nodiscard]] ZTSStyle* originalStyle() const noexcept;
  /// The keys that changed at this level. None only in a record made by `init`.
  [[nodiscard]] const PropertySet* changedProperties() const noexcept { return mChangedProperties.get(); }
  /// The keys that changed where the change started.
  [[nodiscard]] const PropertySet* originalChangedProperties() const noexcept {
    return mOriginalChangedProperties.get();
  }
  /// The old values where the change started, null sentinels included.
  [[nodiscard]] const PropertyMap* oldPropertyMap() const noexcept { return mOldPropertyMap.get(); }

  /// The old values of those of the keys that really changed; none where no key is left. Compares each
  /// key once per change with the original style's current raw value, and remembers the outcome.
  [[nodiscard]] Ref<PropertyMap> unchangedPropertyMapForProperties(const PropertySet& keys) const;

  /// A style of the stylesheet of `style()` that looks as that style did before the change. Reuses one
  /// that fits and otherwise **creates and adds one**. Remembered: later calls answer the same object.
  /// None, and nothing remembered, where there is no style or it has no stylesheet.
  /// Implemented in ZTSStyleChangeInfoVariation.cpp.
  Ref<ZTSStyle> unchangedVariation() const;

  const ZTClass& classObject() const override;
  std::string description() const override;
  static const ZTClass& changeInfoClass();

 private:
  friend class ZTSStyle;

  /// Makes a record that was cascaded from the source, and that nobody else holds, the one that `style` passes on.
  void p_reuseFor(const ZTSStyleChangeInfo& source, ZTSStyle* style, Ref<const PropertySet> changedProperties);

  ZTSStyleChangeInfo();
  ~ZTSStyleChangeInfo() override;

  Ref<ZTSStyle> mStyle;
  Ref<ZTSStyle> mOriginalStyle;
  Ref<const PropertySet> mChangedProperties;
  Ref<const PropertySet> mOriginalChangedProperties;
  mutable Ref<PropertySet> mEqualValuedProperties;    // absent until first needed
  mutable Ref<PropertySet> mUnequalValuedProperties;  // absent until first needed
  Ref<const PropertyMap> mOldPropertyMap;
  mutable Ref<ZTSStyle> mUnchangedVariation;  // absent until first asked
};

}  // namespace zt
