// SPDX-License-Identifier: MIT
#include <wordprocessing/WordFormat.h>

#include <wordprocessing/reading/WordImporter.h>
#include <wordprocessing/writing/EditableWordDocument.h>
#include <wordprocessing/writing/WordEditingRules.h>

namespace zt {

const DocumentFormat& wordFormat() {
  class Word final : public DocumentFormat {
   public:
    [[nodiscard]] std::string_view name() const override { return "WordprocessingML"; }
    [[nodiscard]] bool recognises(const std::filesystem::path& path) const override {
      return WordPackage::recognises(path);
    }
    [[nodiscard]] Ref<ZTDocument> read(const std::filesystem::path& path) const override {
      return importWord(WordDocument::read(WordPackage::read(path))).document;
    }
    [[nodiscard]] std::unique_ptr<EditableDocument> openForEditing(const std::filesystem::path& path) const override {
      return EditableWordDocument::open(path);
    }
    [[nodiscard]] const EditingRules& editingRules() const override { return wordEditingRules(); }
  };
  static const Word word;
  return word;
}

}  // namespace zt
