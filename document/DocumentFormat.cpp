// SPDX-License-Identifier: MIT
#include <document/DocumentFormat.h>

#include <document/editing/EditableDocument.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

std::unique_ptr<EditableDocument> DocumentFormat::openForEditing(const std::filesystem::path& path) const {
  throw EditError(fmt::format("{} is {}, which is read and not written back", path.string(), name()));
}

const EditingRules& DocumentFormat::editingRules() const { return modelEditingRules(); }

const DocumentFormat& formatOf(const std::filesystem::path& path, std::span<const DocumentFormat* const> formats) {
  const auto found = std::find_if(formats.begin(), formats.end() - 1,
                                  [&](const DocumentFormat* candidate) { return candidate->recognises(path); });
  return **found;
}

}  // namespace zt
