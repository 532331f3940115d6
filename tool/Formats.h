// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>

#include <filesystem>
#include <memory>
#include <string_view>

namespace zt {

/// Reads a document of any format that the tool knows, told apart by what is in it. Throws `ReadError` if nothing of
/// it can be read.
Ref<ZTDocument> readDocument(const std::filesystem::path& path);

/// The name of the format that the file has.
std::string_view formatName(const std::filesystem::path& path);

/// The same to be edited and saved. Throws `EditError` where its format is not written back.
std::unique_ptr<EditableDocument> openForEditing(const std::filesystem::path& path);

/// What edits of such a document have to know.
const EditingRules& editingRulesOf(const std::filesystem::path& path);

}  // namespace zt
