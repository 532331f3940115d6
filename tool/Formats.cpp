#include <tool/Formats.h>

#include <document/archive/DocumentArchive.h>
#include <opendocument/OpenDocumentFormat.h>

#include <array>

namespace zt {

Ref<ZTDocument> readDocument(const std::filesystem::path& path) {
  static const std::array<const DocumentFormat*, 2> formats{&archiveFormat(), &openDocumentFormat()};
  return readDocument(path, formats);
}

}  // namespace zt
