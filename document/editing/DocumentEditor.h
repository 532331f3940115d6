// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <document/editing/EditingRules.h>

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zt {

/// An edit that cannot be made, in words for people; nothing was changed by it.
class EditError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whether text that an edit reaches keeps its look although its style goes or inherits from another.
enum class KeepLook : bool { no, yes };

/// Edits of the styles of a document, each made of operations of the library that are undone together. The caller opens
/// the undo group. What the text uses follows: places of the text, children, references, and names inside of values.
/// Notes which styles are meant to look otherwise afterwards, so that everything else can be compared.
class DocumentEditor {
 public:
  explicit DocumentEditor(ZTDocument& document, const EditingRules& rules = modelEditingRules())
      : mDocument(document), mRules(rules) {}

  /// The one style that fits what a person typed. Throws `EditError` where there is none, or several.
  OdfStyle& style(std::string_view text) const;

  /// One value to set, explicitly none where it is the null sentinel, or (none) the own value is to go.
  struct Assignment {
    PropertyKey key;
    Ref<NSObject> value;
  };
  /// Reads "text.fo.font-size=14pt"; "KEY=" sets explicitly no value, "KEY" alone removes the own one. Throws
  /// `EditError`.
  Assignment assignment(const OdfStyle& style, const std::string& text) const;
  /// With `KeepLook::yes` what inherits from the style keeps its look; text that uses the style itself changes.
  void set(OdfStyle& style, const std::vector<Assignment>& assignments, KeepLook keepLook = KeepLook::no);

  /// Gives a named style another name. Names that files cannot write are encoded and shown as given.
  void rename(OdfStyle& style, const std::string& name);
  /// Lets a style other than a list style inherit from a named one of its family, or from the root (none).
  void reparent(OdfStyle& style, OdfStyle* parent, KeepLook keepLook);
  /// What uses the style uses its parent from now on; with `KeepLook::yes`, a variation of that which looks the same.
  void remove(OdfStyle& style, KeepLook keepLook);
  /// What uses `from` uses `into` from now on.
  void merge(OdfStyle& from, OdfStyle& into);

  /// Gives the look of an automatic style a name: it is identified, and other automatic styles of the same parent that
  /// look the same give way to it. Answers these.
  std::vector<Ref<OdfStyle>> promote(OdfStyle& style, const std::string& name);
  /// What uses a named style uses an automatic one instead that looks the same.
  void demote(OdfStyle& style);

  struct ApplyOptions {
    std::set<std::string> only;  ///< labels, names or display names of the styles that are taken; empty for all
    bool adds = false;           ///< styles that this document lacks are taken too
    bool removesOthers = false;  ///< named styles that `source` lacks go, those of lists and `Standard` excepted
  };
  struct Applied {  ///< identifiers
    std::vector<std::string> replaced;
    std::vector<std::string> added;
    std::vector<std::string> removed;
  };
  /// The named styles of a document of the same format take the place of those of the same name and family. What they
  /// inherit from or refer to and this document lacks comes with them; its default styles stay as they are.
  Applied apply(const ZTDocument& source, const ApplyOptions& options);

  struct DedupeOptions {
    bool ignoresRevisionMarks = false;  ///< revision ids are no formatting
    bool mergesLists = false;
  };
  /// Automatic styles of one part and one parent that set the same become the first of them. List styles stay apart:
  /// equal ones may number their lists apart, unless they are asked for; those never give way that are continued, or
  /// that styles refer to. Answers what went.
  std::vector<Ref<OdfStyle>> dedupe(const DedupeOptions& options);

  struct CleanupOptions {
    bool keepsNamed = false;
    /// What the document only says that applications know does not stay for that, and what it says of styles that it
    /// does not have then goes, too.
    bool trimsLatent = false;
    std::set<std::string> kept;  ///< labels or names of styles that stay
  };
  /// Removes styles that nothing uses. The outline, the default styles, what other styles name and what applications
  /// use without naming it ("Standard") stay. Answers what went.
  std::vector<Ref<OdfStyle>> cleanup(const CleanupOptions& options);

  /// Takes away the declarations of fonts that nothing in their part names. Answers their names.
  std::vector<std::string> cleanupFonts();

  /// Whether what uses the style is meant to look otherwise in that property after the edits so far.
  [[nodiscard]] bool isMeant(const OdfStyle& style, PropertyKey key) const;

 private:
  static void store(OdfStyle& target, const std::vector<Assignment>& assignments);
  [[nodiscard]] std::size_t partOfNamedStyles() const;
  void needFonts(const OdfStyle& style, const ZTDocument& from, std::size_t fromPart, std::size_t toPart);
  static std::string prefixOf(const OdfStyle& style);
  void refuseTakenName(const OdfStyle& target, const std::string& fileName) const;
  std::set<const ZTSStyle*> namedByValues() const;
  void mean(const OdfStyle& style, const std::set<std::string_view>* keys, KeepLook children = KeepLook::no);
  void refuseUnknownUses(const OdfStyle& style, const char* what) const;
  void moveUses(const OdfStyle& from, OdfStyle& to);
  void followNames(const OdfStyle& style, const std::string& oldName, const std::string& newName);
  void foldInto(OdfStyle& child, const OdfStyle& parent);
  std::size_t partOf(const OdfStyle& style) const;
  void takeOut(OdfStyle& style);
  void trimLatent();
  void moveReferences(const OdfStyle& from, OdfStyle* to);

  ZTDocument& mDocument;
  const EditingRules& mRules;
  std::unordered_map<const ZTSStyle*, std::optional<std::set<std::string_view>>> mMeant;  // none: in everything
  std::vector<Ref<OdfStyle>> mHeld;                                                       // the keys of that
};

}  // namespace zt
