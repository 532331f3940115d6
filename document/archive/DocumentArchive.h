// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Documents as archives. Version 1 wrote percentages as real numbers and did not say where styles came from;
/// version 2 writes them exactly and does.

#include <document/DocumentFormat.h>

#include <archiving/ZTAArchiveFile.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace zt {

/// The version that is written unless another is asked for, and the newest that is read.
inline constexpr std::uint64_t kArchiveVersion = 2;

struct ArchiveOptions {
  std::uint64_t version = kArchiveVersion;  ///< 1 or 2
  ZTACompression compression = ZTACompression::none;
  bool isDiffable = false;  ///< styles and properties in an order that depends on their content alone; no line numbers
};

/// Registers what archives of this application need. Called by everything below; again does nothing.
void setUpArchives();

/// Packed where the name ends in ".gz".
ZTACompression compressionForName(std::string_view path);

/// The document as an archive. Raises `NSException` where something cannot be written.
std::string archiveBytes(ZTDocument& document, const ArchiveOptions& options = {});
/// Replaces the file in one step: a crash leaves the old one or the new one.
void saveArchive(ZTDocument& document, const std::string& path, const ArchiveOptions& options = {});

/// Whether the file begins like an archive.
bool isArchive(const std::filesystem::path& path);
/// Reads an archive. Throws `ReadError` where nothing of it can be read; what was passed over is among the
/// document's findings. With `isDiffable` the order of anonymous styles is remembered for writing.
Ref<ZTDocument> readArchive(const std::filesystem::path& path, bool isDiffable = false);
Ref<ZTDocument> readArchiveBytes(std::string bytes, const std::string& shown, bool isDiffable = false);

/// Archives as a format among others.
const DocumentFormat& archiveFormat();

}  // namespace zt
