// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>
#include <wordprocessing/writing/WordDifference.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// A document of WordprocessingML that can be edited and saved. A signed one is refused: its signature stands in parts
/// that lead to each other.
class EditableWordDocument final : public EditableDocument {
 public:
  /// Throws `ReadError` for what cannot be read to its end without an error: half of a document is never written.
  static std::unique_ptr<EditableDocument> open(const std::filesystem::path& path);
  /// The same for parts in memory, which cannot be saved.
  static std::unique_ptr<EditableDocument> fromParts(std::vector<WordPackage::Part> parts, const std::string& shown);

 private:
  struct Read;
  EditableWordDocument(DocumentSource source, std::vector<WordPartKind> kinds, Read read);

  std::vector<XmlPart> written(std::vector<ShownEdit>& shown) override;
  [[nodiscard]] Ref<ZTDocument> readAgain(std::vector<XmlPart> parts) const override;
  [[nodiscard]] const OdfStyle* styleOfUse(std::size_t use, const ZTDocument& again) const override;
  [[nodiscard]] bool isReplaceable(const std::filesystem::path& path) const override;
  [[nodiscard]] bool isSignature(std::string_view entry) const override;
  [[nodiscard]] bool canDropSignatures() const override { return false; }

  [[nodiscard]] std::unordered_map<std::size_t, std::vector<PropertyKey>> movedToggles(
      const WordDifference& difference) const;
  void refuseMovedToggles(const WordDifference& difference) const;

  std::vector<WordPartKind> mKinds;                     // of the parts
  WordDocument mRaw;                                    // as read
  std::vector<WordUseAsRead> mUses;                     // likewise
  std::vector<std::size_t> mFirstPlace;                 // of each use
  std::unordered_map<std::string, std::string> mNames;  // of the parts that were written last
  mutable std::vector<const OdfStyle*> mPlacesAgain;    // the styles of the places, of the document that was read again
};

}  // namespace zt
