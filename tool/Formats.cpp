// SPDX-License-Identifier: MIT
#include <tool/Formats.h>

#include <document/archive/DocumentArchive.h>
#include <opendocument/OpenDocumentFormat.h>
#include <wordprocessing/WordFormat.h>

#include <array>

namespace zt {

Ref<ZTDocument> readDocument(const std::filesystem::path& path) {
  static const std::array formats{&archiveFormat(), &wordFormat(), &openDocumentFormat()};
  return readDocument(path, formats);
}

}  // namespace zt
