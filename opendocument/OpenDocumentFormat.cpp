// SPDX-License-Identifier: MIT
#include <opendocument/OpenDocumentFormat.h>

#include <opendocument/reading/StyleImporter.h>
#include <opendocument/writing/EditableOpenDocument.h>

namespace zt {

const DocumentFormat& openDocumentFormat() {
  class OpenDocument final : public DocumentFormat {
   public:
    [[nodiscard]] std::string_view name() const override { return "OpenDocument"; }
    // The format of last resort: what is no other is read as OpenDocument, whose errors say what is wrong.
    [[nodiscard]] bool recognises(const std::filesystem::path&) const override { return true; }
    [[nodiscard]] Ref<ZTDocument> read(const std::filesystem::path& path) const override {
      return importStyles(RawDocument::read(Package::read(path)));
    }
    [[nodiscard]] std::unique_ptr<EditableDocument> openForEditing(const std::filesystem::path& path) const override {
      return EditableOpenDocument::open(path);
    }
  };
  static const OpenDocument openDocument;
  return openDocument;
}

}  // namespace zt
