#include <ztstyles/ZTSStyle.h>
#include <ztstyles/ZTSStyleClassOf.h>

namespace zt {

const PropertySet& ZTSStyleClass::properties() const {
  static const Ref<PropertySet> none = PropertySet::make();
  return *none;
}

NSNotificationName ZTSStyleClass::stylePropertiesChangedNotificationName() const {
  return ZTSStylePropertiesChangedNotification;
}

StringRef ZTSStyleClass::localizationKeyPrefix() const {
  static const StringRef prefix("STYLE_");
  return prefix;
}

StringRef ZTSStyleClass::defaultStyleIdentifier() const { return {}; }

bool ZTSStyleClass::canConstructStyleFromIdentifier(const StringRef&) const { return false; }

Ref<ZTSStyle> ZTSStyleClass::allocateStyle() const { return {}; }

Ref<NSObject> ZTSStyleClass::allocate() const { return allocateStyle(); }

Ref<ZTSStyle> ZTSStyleClass::makeStyle(const ZTSStyleFields& fields) const {
  Ref<ZTSStyle> style = allocateStyle();
  if (!style || !style->initWithName(fields)) return {};
  return style;
}

void ZTSStyleClass::stamp(ZTSStyle& style) const noexcept { style.setPlainGroups(mPlainGroups); }

}  // namespace zt
