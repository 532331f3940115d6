// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>
#include <opendocument/package/Package.h>
#include <opendocument/writing/StyleDifference.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zt {

/// An OpenDocument text that can be edited and saved.
class EditableOpenDocument final : public EditableDocument {
 public:
  /// Throws `ReadError` for what cannot be read to its end without an error: half of a document is never written.
  static std::unique_ptr<EditableDocument> open(const std::filesystem::path& path);
  /// The same for a flat document in memory.
  static std::unique_ptr<EditableDocument> fromFlatText(std::string bytes, const std::string& shown);

 private:
  EditableOpenDocument(Package package, DocumentSource source);

  std::vector<XmlPart> written(std::vector<ShownEdit>& shown) override;
  [[nodiscard]] Ref<ZTDocument> readAgain(std::vector<XmlPart> parts) const override;
  [[nodiscard]] const OdfStyle* styleOfUse(std::size_t use, const ZTDocument& again) const override;
  [[nodiscard]] bool isReplaceable(const std::filesystem::path& path) const override;
  [[nodiscard]] bool isSignature(std::string_view entry) const override;

  ZTDocument::Fonts mFonts;                    // as they were read
  std::optional<StyleDifference> mDifference;  // of the parts that were written last
};

}  // namespace zt
