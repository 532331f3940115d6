// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <filesystem>

namespace zt {

/// Reads a document of any format that the tool knows, told apart by what is in it. Throws `ReadError` if nothing of
/// it can be read.
Ref<ZTDocument> readDocument(const std::filesystem::path& path);

}  // namespace zt
