// SPDX-License-Identifier: MIT
#include <tool/Formats.h>

#include <document/archive/DocumentArchive.h>
#include <opendocument/OpenDocumentFormat.h>
#include <wordprocessing/WordFormat.h>

#include <array>

namespace zt {

namespace {

const DocumentFormat& formatOf(const std::filesystem::path& path) {
  static const std::array formats{&archiveFormat(), &wordFormat(), &openDocumentFormat()};
  return formatOf(path, formats);
}

}  // namespace

Ref<ZTDocument> readDocument(const std::filesystem::path& path) { return formatOf(path).read(path); }

std::string_view formatName(const std::filesystem::path& path) { return formatOf(path).name(); }

const EditingRules& editingRulesOf(const std::filesystem::path& path) { return formatOf(path).editingRules(); }

std::unique_ptr<EditableDocument> openForEditing(const std::filesystem::path& path) {
  return formatOf(path).openForEditing(path);
}

}  // namespace zt
