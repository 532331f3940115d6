// Operations that are declared and not yet written. Each section goes when its files come.

#include <archiving/ZTAXMLCoding.h>
#include <platform/NSException.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStylesheet.h>

namespace zt {

#define ZT_PENDING throw NSGenericException(std::string(__func__) + " is not written yet")

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
