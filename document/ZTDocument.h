// SPDX-License-Identifier: MIT
#pragma once

#include <document/Finding.h>
#include <document/styles/OdfStyle.h>

#include <platform/NSDocument.h>
#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTSStylesheetHost.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zt {

/// Where a style of a document came from.
struct StyleOrigin {
  enum class Kind : std::uint8_t {
    made,          ///< by the application: a root that the file does not give
    defaultStyle,  ///< style:default-style
    named,
    automatic,
    listStyle,  ///< named, automatic ones included
    listLevel
  };

  Kind kind = Kind::made;
  std::size_t part = 0;  ///< index into the document's parts
  int line = 0;          ///< 0 if made
  std::string name;      ///< style:name; of a level, that of its list style and its number
  std::size_t uses = 0;  ///< how often the text uses the style, as `countUses` was told
  /// Which of the style elements of its part it is, from 0; of a level, its list's. For those who write it back.
  std::size_t element = kNoElement;
  std::size_t level = 0;  ///< of a level: which of the elements of its list

  static constexpr std::size_t kNoElement = static_cast<std::size_t>(-1);
};

/// All places of one part that name one style outside of styles: paragraphs, spans, tables, frames, master pages.
struct StyleUse {
  std::size_t part = 0;
  std::string family;
  std::string name;  ///< as it was read
  std::size_t count = 0;
  Ref<OdfStyle> style;  ///< none where no style has the name
};

/// The word for a kind: "named", "automatic", ...
std::string_view originKindName(StyleOrigin::Kind kind);
/// The kind that such a word names, or none.
std::optional<StyleOrigin::Kind> originKindNamed(std::string_view word);

/// A document: it owns its undo manager, its stylesheet and a stylesheet of defaults above that, and
/// serves both as host. What the reader found out about its styles, and which names its parts use
/// for them, stands beside.
class ZTDocument final : public NSDocument, public ZTSStylesheetHost {
 public:
  /// An empty document with a root style for each family of OpenDocument in its defaults.
  static Ref<ZTDocument> create();

  /// A document around a stylesheet that was read, which it serves as host from now on, with its parent. A
  /// stylesheet without parent gets the defaults of an empty document.
  static Ref<ZTDocument> withStylesheet(Ref<ZTSStylesheet> stylesheet);

  [[nodiscard]] NSUndoManager* undoManager() const override { return mUndoManager.get(); }
  [[nodiscard]] NSDocument* document() const override { return const_cast<ZTDocument*>(this); }

  /// Asked during a cleanup; without it every unused style is kept.
  std::function<bool(const ZTSStyle&)> mayRemoveUnused;
  bool willRemoveUnusedStyle(ZTSStyle& style) override { return mayRemoveUnused && mayRemoveUnused(style); }

  /// The document's styles. Its parent is `defaults()`.
  [[nodiscard]] ZTSStylesheet& stylesheet() const noexcept { return *mStylesheet; }
  /// What the application gives every document: one style a family, under the identifier of the
  /// family's root. A document's own root of the family inherits from it.
  [[nodiscard]] ZTSStylesheet& defaults() const noexcept { return *mDefaults; }

  /// @name What was read
  /// @{

  struct Part {
    std::string name;   ///< "flat", "styles.xml", "content.xml"
    std::string shown;  ///< how messages name it
  };
  std::string shown;  ///< the file or folder
  std::vector<Part> parts;
  std::vector<Finding> findings;
  /// Styles that something names which no reader here understands: they are in use and keep their names.
  struct UnknownUse {
    Ref<OdfStyle> style;
    SourcePlace place;
    std::string attribute;
  };
  std::vector<UnknownUse> unknownUses;
  /// Styles of lists that other lists continue: each numbers on where an earlier one ended.
  std::set<const ZTSStyle*> continuedLists;
  std::unordered_map<std::string, std::string> fontFamilies;  ///< declared font to family
  /// @}

  /// @name Fonts
  /// @{

  /// By part and name, with their families; empty where the format declares none.
  using Fonts = std::map<std::pair<std::size_t, std::string>, std::string>;
  [[nodiscard]] const Fonts& declaredFonts() const noexcept { return mUses->fonts; }
  void recordFont(std::size_t part, std::string name, std::string family);
  /// Declares a font in a part, or no longer (none), undoably.
  void setFont(std::size_t part, const std::string& name, const std::optional<std::string>& family);
  /// Whether an own value that names a font says anything: it does where the part of the style declares the font.
  [[nodiscard]] bool isDeclaredFont(const ZTSStyle& style, const NSObject* value) const;
  /// Fonts that something in a part names besides styles.
  std::set<std::pair<std::size_t, std::string>> otherFontUses;
  /// @}

  /// @name Styles by what files call them
  /// Borrowed, none where there is none. A style that has left the stylesheet is still found.
  /// @{

  [[nodiscard]] OdfStyle* rootStyle(std::string_view family) const;
  [[nodiscard]] OdfStyle* namedStyle(std::string_view family, std::string_view name) const;
  [[nodiscard]] OdfStyle* automaticStyle(std::size_t part, std::string_view family, std::string_view name) const;
  /// What a reference in the text of a part means: an automatic style of that part, else a named one.
  [[nodiscard]] OdfStyle* referredStyle(std::size_t part, std::string_view family, std::string_view name) const;
  /// All styles that fit what a person types: an identifier, "P1", "paragraph:P1",
  /// "content.xml:paragraph:P1", or a display name. In the order of the document.
  [[nodiscard]] std::vector<OdfStyle*> stylesCalled(std::string_view text) const;
  /// @}

  /// @name Origins
  /// @{

  /// Notes where a style came from, and the name of an automatic style in its part.
  void recordOrigin(Ref<OdfStyle> style, StyleOrigin origin);
  /// Notes uses by the text, and counts them on their style.
  void recordUse(StyleUse use);
  /// In the order in which they were noted.
  [[nodiscard]] const std::vector<StyleUse>& styleUses() const noexcept { return mUses->all; }
  /// Lets these places of the text use another style, undoably. The counts go over.
  void moveUse(std::size_t index, OdfStyle& style);
  /// Counts uses by the text on a style.
  void countUses(OdfStyle& style, std::size_t uses);
  /// Each first style has left the stylesheet, and the second answers for it: what files call the first means the
  /// second from now on, and the uses that are noted go over. An anonymous answer that was not read itself also takes
  /// the origin and the place among the read styles, from the first style that it answers for. Usage counts stay.
  void replaceReadStyles(const std::vector<std::pair<Ref<OdfStyle>, Ref<OdfStyle>>>& answers);
  /// None for a style that was not read.
  [[nodiscard]] const StyleOrigin* originOf(const ZTSStyle& style) const;
  [[nodiscard]] SourcePlace placeOf(const ZTSStyle& style) const;
  /// A name for people that is unique in the document: the identifier, or "content.xml:paragraph:P1".
  [[nodiscard]] std::string labelOf(const ZTSStyle& style) const;
  /// The styles that were read, in the order of the document.
  [[nodiscard]] const std::vector<Ref<OdfStyle>>& readStyles() const noexcept { return mReadStyles; }
  /// @}

  static const ZTClass& appDocumentClass();
  const ZTClass& classObject() const override { return appDocumentClass(); }

 private:
  ZTDocument();
  ~ZTDocument() override;

  /// What undo actions of `moveUse` and `setFont` hold: the document itself holds the actions.
  struct Uses final : NSObject {
    void move(NSUndoManager& manager, std::size_t index, Ref<OdfStyle> style);
    void setFont(NSUndoManager& manager, const std::pair<std::size_t, std::string>& place,
                 const std::optional<std::string>& family);
    std::vector<StyleUse> all;
    Fonts fonts;
  };

  Ref<NSUndoManager> mUndoManager;
  Ref<Uses> mUses;
  Ref<ZTSStylesheet> mDefaults;
  Ref<ZTSStylesheet> mStylesheet;
  std::vector<Ref<OdfStyle>> mReadStyles;
  std::unordered_map<const ZTSStyle*, StyleOrigin> mOrigins;  // of mReadStyles, which holds the keys
  std::unordered_map<std::string, OdfStyle*> mAutomatic;      // by part, family and name; held likewise
};

}  // namespace zt
