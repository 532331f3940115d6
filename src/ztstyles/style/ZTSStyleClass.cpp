// SPDX-License-Identifier: MIT
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStyle.h>
#include <ztstyles/ZTSStyleClass.h>

#include <boost/core/demangle.hpp>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyleClass";

}  // namespace

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

/// Whether a style that the class has made says that it is of this class; reports where not.
bool ZTSStyleClass::isClassOf(const ZTSStyle& made) const {
  if (mIsKnownToMakeItsOwn.load(std::memory_order_relaxed)) return true;
  const ZTSStyleClass& its = made.classObject();
  if (&its == this || its.isKindOf(*this)) {
    mIsKnownToMakeItsOwn.store(true, std::memory_order_relaxed);
    return true;
  }
  ZT_REPORT("makeStyle:", this, kSourceFile,
            "The style class %@ has no classObject() of its own: its styles say that they are of class %@.", name(),
            its.name());
  return false;
}

Ref<NSObject> ZTSStyleClass::allocate() const {
  Ref<ZTSStyle> style = allocateStyle();
  if (!style || !isClassOf(*style)) return {};
  return style;
}

Ref<ZTSStyle> ZTSStyleClass::makeStyle(const ZTSStyleFields& fields) const {
  Ref<ZTSStyle> style = allocateStyle();
  if (!style || !isClassOf(*style) || !style->initWithName(fields)) return {};
  return style;
}

Ref<ZTSStyle> ZTSStyleClass::makeStyleOfType(const std::type_info& asked, const ZTSStyleFields& fields) const {
  if (asked == type()) return makeStyle(fields);
  ZT_REPORT("makeStyle:", this, kSourceFile,
            "The style class %@ has no styleClass() of its own: the one that it inherits makes styles of class %@.",
            boost::core::demangle(asked.name()), name());
  return {};
}

void ZTSStyleClass::stamp(ZTSStyle& style) const noexcept { style.setPlainGroups(mPlainGroups); }

}  // namespace zt
