// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <wordprocessing/properties/PropertyReader.h>
#include <wordprocessing/reading/WordDocument.h>

#include <array>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

/// Makes list styles of numbering definitions (w:abstractNum), and children of them of their instances (w:num), which
/// override levels. Called step by step by the importer of a document.
class NumberingImporter {
 public:
  NumberingImporter(const WordDocument& raw, ZTDocument& document) : mRaw(raw), mDocument(document) {}

  /// Finds the lists and reads what they and their levels set; hands each map over, for the registries.
  void readMaps(PropertyReader& reader, const std::function<void(StyleFamily, const PropertyMap&)>& note);
  /// Makes the styles. `numberOfStyle` answers the w:numId of a numbering style, none where there is none.
  void makeStyles(const std::function<const std::string*(const std::string& id)>& numberOfStyle);
  /// Sets the paragraph style that a level numbers. `find` answers none where there is none.
  void connect(const std::function<OdfStyle*(const std::string& id)>& find);
  void addStyles();

  /// The list style of a w:numId, or none.
  [[nodiscard]] OdfStyle* find(const std::string& number) const;

 private:
  static constexpr std::size_t kLevels = 9;

  struct Level {
    Ref<PropertyMap> map;
    std::string paragraphStyle;
    int line = 0;
    Ref<OdfStyle> style;
  };
  struct List {
    const RawWordStyle* raw = nullptr;
    std::string id;
    bool isAbstract = false;
    std::string abstractId;  // of an instance
    std::string linked;      // of a definition that stands for another: the numbering style that both name
    Ref<PropertyMap> map;
    std::array<Level, kLevels> levels;
    Ref<OdfStyle> style;
  };
  using Note = std::function<void(StyleFamily, const PropertyMap&)>;

  void readList(const RawWordStyle& raw, bool isAbstract, PropertyReader& reader, const Note& note);
  void readLevel(const WordElement& element, List& list, PropertyReader& reader, const Note& note);
  void readOverride(const WordElement& element, List& list, PropertyReader& reader, const Note& note);
  [[nodiscard]] const List* definitionOf(const List& list) const;
  [[nodiscard]] std::string parentOf(const List& list,
                                     const std::function<const std::string*(const std::string& id)>& numberOfStyle);
  [[nodiscard]] PropertyReader::Owner ownerOf(const List& list) const;
  void tell(const char* code, const List& list, int line, const std::string& message);

  const WordDocument& mRaw;
  ZTDocument& mDocument;
  std::vector<List> mLists;
  std::unordered_map<std::string, std::size_t> mPlaces;  // by identifier
  std::unordered_map<std::string, std::string> mBases;   // the definition that a numbering style is based on, its id
};

}  // namespace zt
