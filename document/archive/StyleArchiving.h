// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What styles of this application leave beside the library's part of their elements.

#include <document/ZTDocument.h>

#include <support/ZTUPair.h>
#include <ztstyles/ZTSStylesheet.h>

#include <string>
#include <utility>
#include <vector>

struct _xmlNode;

namespace zt {

/// The key under which an unarchiver holds an `ArchivedOrigins`.
inline constexpr const char* kArchivedOrigins = "ZTDocumentArchivedOrigins";

/// Where the styles of an archive came from, in the order of the archive.
using ArchivedOrigins = ZTUBox<std::vector<std::pair<Ref<OdfStyle>, StyleOrigin>>>;

/// The text of an archive's attribute; empty where the element has none.
std::string archivedText(_xmlNode* node, const char* attribute);

/// Brings the styles of an older version up to date, adds keys that documents made up to the registries of
/// their families, and drops values that their property does not take, with a finding each.
class ArchiveUpgrader final : public ZTSStylesheetUpgrader {
 public:
  void postUnarchiveUpgradeStylesheetForUnarchiver(ZTSStylesheet& stylesheet, ZTAXMLUnarchiver& unarchiver) override;
};

/// Writes percentages as version 1 did.
class ArchiveDowngrader final : public ZTSStylesheetDowngrader {
 public:
  void preArchiveDowngradeStylesheetForVersionArchiver(ZTSStylesheet& stylesheet, std::uint64_t version,
                                                       ZTAXMLArchiver& archiver) override;
};

}  // namespace zt
