// SPDX-License-Identifier: MIT
#include <document/DocumentFormat.h>

#include <algorithm>

namespace zt {

Ref<ZTDocument> readDocument(const std::filesystem::path& path, std::span<const DocumentFormat* const> formats) {
  const auto found = std::find_if(formats.begin(), formats.end() - 1,
                                  [&](const DocumentFormat* candidate) { return candidate->recognises(path); });
  return (*found)->read(path);
}

}  // namespace zt
