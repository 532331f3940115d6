// SPDX-License-Identifier: MIT
#include <archiving/ZTAError.h>
#include <archiving/ZTAXMLCoding.h>
#include <platform/ZTClass.h>

#include <utility>

namespace zt {

Ref<ZTAError> ZTAErrorHandler::handleError(Ref<ZTAError> error) { return error; }

Ref<NSObject> ZTAXMLCoding::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*) { return Ref<NSObject>(this); }
void ZTAXMLCoding::preencodeHookWithXMLArchiver(ZTAXMLArchiver&) {}
void ZTAXMLCoding::postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver&) {}
void ZTAXMLCoding::preArchiveDowngradeForVersion(std::uint64_t, ZTAXMLArchiver&) {}
const ZTClass& ZTAXMLCoding::classForCoder() const { return classObject(); }
const ZTClass* ZTAXMLCoding::ztClassAncestor() const { return nullptr; }
const ZTAArchivedItems* ZTAXMLCoding::archivedItems() const { return nullptr; }
void ZTAXMLCoding::standInForClassNamed(const StringRef&) {}
_xmlNode* ZTAXMLCoding::containerInArchive(const ZTAXMLArchiver&) const { return nullptr; }
bool ZTAXMLCoding::archivesByReference() const { return false; }
void ZTAXMLCoding::replaceUnarchivedObject(NSObject&, NSObject*) {}
void ZTAXMLCoding::releaseArchivedObjects(std::vector<Ref<NSObject>>&& objects) const {
  const std::vector<Ref<NSObject>> released = std::move(objects);
}

}  // namespace zt
