// SPDX-License-Identifier: MIT
#pragma once

#include <wordprocessing/writing/PropertyWriter.h>
#include <wordprocessing/writing/WordDifference.h>

namespace zt {

/// What styles and lists say, as elements of their parts.
class WordStyleWriter {
 public:
  explicit WordStyleWriter(ElementEdits& edits) : mEdits(edits), mProperties(edits) {}

  /// A w:style with the parts of a table style in it.
  void editStyle(const PlacedElement& element, const WordDifference::Element& changes);
  /// A w:abstractNum or w:num with its levels.
  void editList(const PlacedElement& element, const WordDifference::Element& changes);
  /// w:docDefaults; `root` is the paragraph or the text root. Without an element the text of a new one.
  void editDefaults(const PlacedElement& element, const std::vector<const StyleAsRead*>& roots);
  [[nodiscard]] static std::string newDefaults(const std::vector<const StyleAsRead*>& roots);
  /// w:latentStyles.
  void editLatentStyles(const PlacedElement& element, const StyleAsRead& root);
  /// The element of a new style, with standard prefixes.
  [[nodiscard]] static std::string newStyle(const OdfStyle& style);

 private:
  void editItself(const PlacedElement& element, const StyleAsRead& before, NewChildren& added);

  ElementEdits& mEdits;
  PropertyWriter mProperties;
};

}  // namespace zt
