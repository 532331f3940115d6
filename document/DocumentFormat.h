// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <filesystem>
#include <span>
#include <string_view>

namespace zt {

/// A form of files that documents are read from. Formats live as long as the process and know nothing of each other;
/// a program lists those that it wants.
class DocumentFormat {
 public:
  virtual ~DocumentFormat() = default;

  /// A word for people, such as "OpenDocument".
  [[nodiscard]] virtual std::string_view name() const = 0;
  /// Whether the file or folder looks like one of this format, told by what is in it and not by its name. Does not
  /// throw.
  [[nodiscard]] virtual bool recognises(const std::filesystem::path& path) const = 0;
  /// Reads it. Throws `ReadError` if nothing of it can be read; what was repaired is among the document's findings.
  [[nodiscard]] virtual Ref<ZTDocument> read(const std::filesystem::path& path) const = 0;
};

/// Reads a document by the first format that recognises it, or else by the last, whose words then say what is wrong.
/// There has to be one format at least. Throws as `DocumentFormat::read`.
Ref<ZTDocument> readDocument(const std::filesystem::path& path, std::span<const DocumentFormat* const> formats);

}  // namespace zt
