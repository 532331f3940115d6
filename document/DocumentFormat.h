// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace zt {

class EditableDocument;
class EditingRules;

/// How a document lies on the disk: one file of XML, a package of parts, or the parts in a folder.
enum class DocumentForm : std::uint8_t { flat, package, folder };

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
  /// Reads it to be edited and saved. Throws `ReadError` for what cannot be read without an error, and `EditError`
  /// where the format is not written back (which is so unless this is overridden).
  [[nodiscard]] virtual std::unique_ptr<EditableDocument> openForEditing(const std::filesystem::path& path) const;
  /// What edits of its documents have to know; those of the document model unless this is overridden.
  [[nodiscard]] virtual const EditingRules& editingRules() const;
};

/// The first format that recognises the file, or else the last, whose words then say what is wrong. There has to be one
/// at least.
const DocumentFormat& formatOf(const std::filesystem::path& path, std::span<const DocumentFormat* const> formats);

}  // namespace zt
