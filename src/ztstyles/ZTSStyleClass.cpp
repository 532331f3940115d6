#include <ztstyles/ZTSStyle.h>
#include <ztstyles/ZTSStyleClassOf.h>

namespace zt {

const PropertySet& ZTSStyleClass::properties() const {
  static const Ref<PropertySet> none = PropertySet::make();
  return *none;
}

NSNotificationName ZTSStyleClass::stylePropertiesChangedNotificationName() const { return ZTSStylePropertiesChangedNotification; }

StringRef ZTSStyleClass::localizationKeyPrefix() const {
  static const StringRef prefix("STYLE_");
  return prefix;
}

StringRef ZTSStyleClass::defaultStyleIdentifier() const { return {}; }

bool ZTSStyleClass::canConstructStyleFromIdentifier(const StringRef&) const { return false; }

Ref<ZTSStyle> ZTSStyleClass::makeStyle(const ZTSStyleFields& fields) const {
  const Ref<NSObject> bare = allocate();
  Ref<ZTSStyle> style(asStyle(bare.get()));
  if (!style || !style->initWithName(fields)) return {};
  return style;
}

void ZTSStyleClass::stamp(ZTSStyle& style) const noexcept { style.mSmall[0] = mPlainGroups; }

}  // namespace zt
