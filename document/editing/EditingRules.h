// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/StyleNames.h>

namespace zt {

/// What edits have to know of a form of files: how it names styles, and where values name others as text. What is said
/// here itself holds for the document model, which has the names of OpenDocument; another format overrides what
/// differs. Rules have no state and live as long as the process.
class EditingRules {
 public:
  virtual ~EditingRules() = default;

  /// What files are to call a named style that people call `shown` from now on. A format whose styles have names for
  /// files and for people that need not agree may answer the name that the style has.
  [[nodiscard]] virtual std::string fileName(const OdfStyle& style, std::string_view shown) const;
  /// What files are to call a new named style of the family.
  [[nodiscard]] virtual std::string newFileName(StyleFamily family, std::string_view shown) const;

  /// The value of a property of a root style without what it says of styles that the document does not have; the value
  /// itself where it says nothing of that kind.
  [[nodiscard]] virtual Ref<NSObject> withoutLatentStyles(const ZTSStylesheet& stylesheet, PropertyKey key,
                                                          const Ref<NSObject>& value) const;
  /// Whether the document says of the style that applications know it, which keeps it where nothing uses it.
  [[nodiscard]] virtual bool isLatent(const OdfStyle& style) const;
  /// Whether applications use the style for text that names none.
  [[nodiscard]] virtual bool isUsedUnnamed(const OdfStyle& style) const;

  /// The styles that an own value names as text rather than as a reference: they stay while it does, and follow when
  /// they are renamed.
  [[nodiscard]] virtual std::vector<NamedStyle> stylesNamedBy(const OdfStyle& style, PropertyKey key,
                                                              const NSObject& value) const;
  /// The value with another name for each style that it names, where `renamed` answers one.
  [[nodiscard]] virtual Ref<NSObject> valueWithNames(
      const OdfStyle& style, PropertyKey key, const NSObject& value,
      const std::function<std::string(const NamedStyle&)>& renamed) const;
};

/// The rules of the document model itself.
const EditingRules& modelEditingRules();

}  // namespace zt
