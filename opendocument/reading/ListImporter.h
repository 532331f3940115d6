// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <opendocument/reading/PropertyImporter.h>
#include <opendocument/reading/RawDocument.h>

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

/// Makes list styles and outline styles, with a style for each of their levels. Called step by step
/// by the importer of a document, since lists refer to text styles and paragraph styles to lists.
class ListImporter {
 public:
  ListImporter(const RawDocument& raw, ZTDocument& document) : mRaw(raw), mDocument(document) {}

  [[nodiscard]] bool isEmpty() const noexcept { return mLists.empty(); }

  /// Reads what lists and levels set. Of repeated named lists the later counts, of repeated automatic
  /// ones the earlier.
  void readMaps(PropertyImporter& properties);
  /// Makes the styles and notes where they came from; levels become values of their lists.
  void makeStyles();
  /// Sets the text style of each level that names one. `find` answers none where there is none.
  void connectTextStyles(const std::function<OdfStyle*(const RawListStyle& from, const std::string& name)>& find);
  /// Adds all to the document's stylesheet, levels before their lists.
  void addStyles();

  /// What a reference from a style finds. Automatic styles see the automatic lists of their part first, named
  /// styles the named ones; each the others otherwise.
  [[nodiscard]] OdfStyle* find(const RawStyle& from, const std::string& name) const;

 private:
  struct List {
    const RawListStyle* raw;
    Ref<PropertyMap> map;
    std::vector<Ref<PropertyMap>> levelMaps;
    Ref<OdfStyle> style;
    std::vector<Ref<OdfStyle>> levels;  // as in `raw`; none for a level that cannot be used
  };

  Ref<OdfStyle> makeLevel(List& list, std::size_t index, const std::string& label);
  void tell(const char* code, const RawListStyle& list, int line, const std::string& style, const std::string& message);
  static std::string keyOf(const RawListStyle& list);

  const RawDocument& mRaw;
  ZTDocument& mDocument;
  std::vector<List> mLists;
  std::unordered_map<std::string, std::size_t> mPlaces;
};

}  // namespace zt
