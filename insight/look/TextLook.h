// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace zt {

/// The styles that meet on a piece of text. A style with direct formatting is the variation that it came to.
struct TextPlace {
  const OdfStyle* table = nullptr;           ///< of the table that it stands in
  std::vector<PropertyKey> tableParts = {};  ///< the parts of the table that it stands in, the weakest first
  const OdfStyle* paragraph = nullptr;
  const OdfStyle* text = nullptr;  ///< of the run; none for the paragraph as such
};

/// Where an entry stands, from the weakest to the strongest.
enum class LookLevel : std::uint8_t { defaults, table, list, paragraph, character, direct };

std::string_view levelName(LookLevel level);

/// What one style says about a property of the text.
struct LookEntry {
  const OdfStyle* style = nullptr;
  LookLevel level = LookLevel::defaults;
  NSObject* value = nullptr;  ///< its own entry, the null sentinel included; borrowed
  bool counts = false;        ///< whether it has a part in what the text looks like
};

/// A property of the text: what it comes to and why.
struct LookProperty {
  PropertyKey key;
  Ref<NSObject> value;             ///< none where nothing is set, or explicitly nothing; theme references are followed
  std::vector<LookEntry> entries;  ///< strongest first
};

/// What text looks like: the strongest entry of each property decides. Direct formatting is stronger than the character
/// style, that one than the paragraph style, the table style and the document's defaults. What a level of a list says
/// of indents stands just below the style that sets the list. A share is one of the next entry below. A toggle is
/// absolute in direct formatting; below it the character, paragraph and table style each turn it over, unless the
/// defaults set it (ECMA-376 part 1, 17.7.2 and 17.7.3). Borrows from the document: use it before the document changes.
class TextLook {
 public:
  TextLook(const ZTDocument& document, const TextPlace& place);

  /// One property. Cost: a look at the own entries of each style of the stack.
  [[nodiscard]] LookProperty property(PropertyKey key) const;
  [[nodiscard]] Ref<NSObject> value(PropertyKey key) const { return property(key).value; }
  /// Whether the text is of a complex script: it runs from right to left (w:rtl) or says so (w:cs).
  [[nodiscard]] bool isComplexScript() const;
  /// The property that counts for such text: of a complex script `w.bCs`, `w.iCs`, `w.szCs` and the font `w.rFonts.cs`
  /// in place of their neighbours (17.3.2.7, 17.3.2.30), else the key itself. Meant for text of one script.
  [[nodiscard]] PropertyKey countingKey(PropertyKey key) const;
  /// All properties that some style of the stack sets, by their names. What a style says of itself is left out.
  [[nodiscard]] std::vector<LookProperty> properties() const;

 private:
  struct Layer {
    const OdfStyle* style;
    LookLevel level;
  };

  void addChain(const OdfStyle* style, LookLevel named);
  void addParagraph(const OdfStyle& paragraph);
  [[nodiscard]] const OdfStyle* levelOf(const OdfStyle& paragraph, const OdfStyle& setter) const;
  void addTable(const TextPlace& place);
  void addRoot(const OdfStyle* style);
  static void takeToggle(LookProperty& property);
  static void takeStrongest(LookProperty& property);

  const ZTDocument& mDocument;
  std::vector<Layer> mLayers;  // strongest first
};

}  // namespace zt
