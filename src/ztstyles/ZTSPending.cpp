// Operations that are declared and not yet written. Each section goes when its files come.

#include <archiving/ZTAXMLCoding.h>
#include <platform/NSException.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTSUnusedStyles.h>
#include <ztstyles/ZTSVariationIndex.h>

namespace zt {

#define ZT_PENDING throw NSGenericException(std::string(__func__) + " is not written yet")

// ---- vary: ZTSStyleOverrides.cpp
Ref<PropertyMap> ZTSStyle::overridePropertyMapWithPropertyMap(const PropertyMap*, const PropertyMap*, bool) const { ZT_PENDING; }
void ZTSStyle::collapseOverriddenPropertyValues() { ZT_PENDING; }
void ZTSStyle::clearOverriddenPropertyValues() { ZT_PENDING; }
Ref<PropertySet> ZTSStyle::compareProperties(const ZTSStyle&) const { ZT_PENDING; }
bool ZTSStyle::isEqualToStyleForProperty(const ZTSStyle&, PropertyKey) const { ZT_PENDING; }
void ZTSStyle::replaceWithStyle(ZTSStyle*) { ZT_PENDING; }
// ---- vary: ZTSStylesheetIdentify.cpp
void ZTSStylesheet::identifyStyle(Ref<ZTSStyle>, StringRef) { ZT_PENDING; }
void ZTSStylesheet::identifyStyleKeepingAllChildren(Ref<ZTSStyle>, StringRef, bool) { ZT_PENDING; }
void ZTSStylesheet::identifyStyleKeepingChildren(Ref<ZTSStyle>, StringRef, const ZTUMutablePointerSet<ZTSStyle>*) { ZT_PENDING; }
void ZTSStylesheet::anonymizeStyle(Ref<ZTSStyle>) { ZT_PENDING; }
// ---- vary: ZTSStylesheetVariations.cpp
Ref<ZTSStyle> ZTSStylesheet::variationOfStyle(ZTSStyle*, const StyleVariationRequest&) { ZT_PENDING; }
Ref<ZTSStyle> ZTSStylesheet::anonymousChildOfStyle(ZTSStyle*, const PropertyMap*, bool) { ZT_PENDING; }
Ref<ZTSStyle> ZTSStylesheet::anonymousStyleOfClass(const ZTSStyleClass&, const StringRef&, const PropertyMap*, bool) { ZT_PENDING; }
Ref<ZTSStyle> ZTSStylesheet::createStyleOfClass(const ZTSStyleClass&, const ZTSStyleFields&) { ZT_PENDING; }
void ZTSStylesheet::addStyleAndReferencedStyles(Ref<ZTSStyle>) { ZT_PENDING; }
void ZTSStylesheet::addStyleAndReferencedStylesWithContext(Ref<ZTSStyle>, NSObject*) { ZT_PENDING; }
void ZTSStylesheet::removeStyleAndReferencedStyles(Ref<ZTSStyle>) { ZT_PENDING; }
// ---- vary: ZTSStylesheetCleanup.cpp
void ZTSStylesheet::enableUnusedStyleCleanup() { ZT_PENDING; }
void ZTSStylesheet::disableUnusedStyleCleanup() { ZT_PENDING; }
void ZTSStylesheet::cleanupUnusedStyles() { ZT_PENDING; }

// ---- vary: ZTSVariationIndex.cpp, ZTSUnusedStyles.cpp
void ZTSStyle::matchingChanged() {}
void ZTSVariationIndexes::childWasAdded(ZTSStyle&, ZTSStyle&) {}
void ZTSVariationIndexes::dropIndexOf(ZTSStyle&) noexcept {}
bool ZTSVariationIndexes::check(const ZTSStylesheet&) const { return true; }
void ZTSUnusedStyles::useChanged(ZTSStyle&) {}
void ZTSUnusedStyles::styleEntered(ZTSStyle&) {}
void ZTSUnusedStyles::styleLeft(ZTSStyle&) noexcept {}
bool ZTSUnusedStyles::check(const ZTSStylesheet&) const { return true; }

// ---- archive: ZTAXMLCoding.cpp
Ref<ZTAError> ZTAErrorHandler::handleError(Ref<ZTAError>) { ZT_PENDING; }
Ref<NSObject> ZTAXMLCoding::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*) { return Ref<NSObject>(this); }
void ZTAXMLCoding::preencodeHookWithXMLArchiver(ZTAXMLArchiver&) {}
void ZTAXMLCoding::postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver&) {}
void ZTAXMLCoding::preArchiveDowngradeForVersion(std::uint64_t, ZTAXMLArchiver&) {}
const ZTClass& ZTAXMLCoding::classForCoder() const { return classObject(); }
const ZTClass* ZTAXMLCoding::ztClassAncestor() const { return nullptr; }
// ---- archive: ZTSStylePersistenceAdditions.cpp
void ZTSStyle::encodeWithXMLArchiver(ZTAXMLArchiver&, _xmlNode*, std::uint64_t) { ZT_PENDING; }
bool ZTSStyle::initWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*, std::uint64_t) { ZT_PENDING; }
Ref<NSObject> ZTSStyle::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*) { ZT_PENDING; }
void ZTSStyle::preencodeHookWithXMLArchiver(ZTAXMLArchiver&) { ZT_PENDING; }
const ZTClass* ZTSStyle::ztClassAncestor() const { return nullptr; }
Ref<ZTAError> ZTSStyle::handleError(Ref<ZTAError>) { ZT_PENDING; }
Ref<const PropertyMap> ZTSStyle::archivedPropertiesForVersion(std::uint64_t, ZTAXMLArchiver&) const { ZT_PENDING; }
bool ZTSStyle::hasDefaultValueForProp(PropertyKey) const { return false; }
Ref<NSObject> ZTSStyle::defaultValueForProp(PropertyKey) const { return {}; }
bool ZTSStyle::canBeReconstructedFromIdentifier() const { ZT_PENDING; }
Ref<ZTSStyle> ZTSStyle::initWithIdentifier(const StringRef&) { ZT_PENDING; }
void ZTSStyle::ensureSavedWithXMLArchiver(ZTAXMLArchiver&) { ZT_PENDING; }
void ZTSStyle::archivingSetStylesheet(ZTSStylesheet*) { ZT_PENDING; }
void ZTSStyle::archivingUpdateParent() { ZT_PENDING; }
void ZTSStyle::upgradeStyleWithUnarchiver(ZTAXMLUnarchiver&, std::uint64_t) { ZT_PENDING; }
Ref<ZTSStyle> ZTSStyle::downgradeCopy() const { ZT_PENDING; }
Ref<ZTSStyle> ZTSStyle::copyWithoutSettingStylesheet() const { ZT_PENDING; }
bool ZTSStyle::sortXMLPropertiesByKey() { return false; }
// ---- archive: ZTSStylesheetPersistenceAdditions.cpp, ZTSDowngradeStylesheet.cpp
void ZTSStylesheet::encodeWithXMLArchiver(ZTAXMLArchiver&, _xmlNode*, std::uint64_t) { ZT_PENDING; }
bool ZTSStylesheet::initWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*, std::uint64_t) { ZT_PENDING; }
void ZTSStylesheet::postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver&) { ZT_PENDING; }
void ZTSStylesheet::preArchiveDowngradeForVersion(std::uint64_t, ZTAXMLArchiver&) { ZT_PENDING; }
std::optional<std::vector<Ref<ZTSStyle>>> ZTSStylesheet::enumeratorForOrderedIdentifiedStyles() const { return {}; }
std::optional<std::vector<Ref<ZTSStyle>>> ZTSStylesheet::enumeratorForOrderedAnonymousStyles() const { return {}; }
Ref<ZTSStylesheet> ZTSStylesheet::downgradeStylesheetWithArchiver(ZTAXMLArchiver&) { ZT_PENDING; }
Ref<ZTSStylesheet> ZTSStylesheet::overrideDowngradeStylesheetWithArchiver(ZTAXMLArchiver&) { ZT_PENDING; }

}  // namespace zt
