// SPDX-License-Identifier: MIT
#pragma once

#include <document/DocumentFormat.h>
#include <document/editing/DocumentEditor.h>
#include <document/editing/LookImage.h>
#include <document/editing/StylesAsRead.h>
#include <document/xml/XmlBytes.h>
#include <document/xml/XmlPart.h>
#include <document/xml/XmlSplices.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// How a document is saved.
struct SaveOptions {
  std::filesystem::path out;    ///< where to; the document itself with `isInPlace`
  bool isInPlace = false;       ///< `out` may be, and is, what was read
  bool isForced = false;        ///< `out` may be something that is no document of this form
  bool dropsSignature = false;  ///< a signature, which is no longer true of an edited document, is left out
  std::string backupSuffix;     ///< what was there before stays under its name with this, unless it is empty
};

/// A document as it was found: where, and the bytes of its parts.
struct DocumentSource {
  std::filesystem::path path;
  DocumentForm form = DocumentForm::flat;
  std::string container;       ///< the bytes of a package, else empty
  std::vector<XmlPart> parts;  ///< those that may be written, by their names as entries, or as files of a folder

  /// A package that was read: takes its bytes, too. Throws `ReadError` where they are no longer those of the parts.
  static DocumentSource package(std::filesystem::path path, std::vector<XmlPart> parts);
};

/// One edit of a part, to be shown.
struct ShownEdit {
  SourcePlace place;
  std::string before;
  std::string after;
};

/// Throws `ReadError` for a document with a finding that says that something of it could not be read: half of one is
/// never written.
void refuseHalfRead(const ZTDocument& document);

/// The bytes of a part with splices of its text made, each noted in `shown`; without any, its very bytes.
std::string editedBytes(const XmlPart& part, const XmlBytes& bytes, const XmlSplices& splices,
                        std::vector<ShownEdit>& shown);

/// A document of any format that can be edited and saved in the form in which it was read. Holds its bytes.
///
/// What is common to all formats is here: the edits are operations on the document model, what would be written is read
/// again and compared before it is, and a file takes the place of another in one step. A format derives from this and
/// says how it writes the difference between its styles as read and as they are, see "What a format provides".
class EditableDocument {
 public:
  EditableDocument(const EditableDocument&) = delete;
  EditableDocument& operator=(const EditableDocument&) = delete;
  virtual ~EditableDocument();

  [[nodiscard]] ZTDocument& document() const noexcept { return *mDocument; }
  [[nodiscard]] DocumentEditor& editor() noexcept { return mEditor; }

  /// The parts as they are to be written, in the order of reading, those that do not change included. Checked: what is
  /// written is read again, says what the document says, and looks as it looked but for what the edits meant. Throws
  /// `EditError` where that is not so. An unchanged document gives the very bytes. Costs about what reading costs.
  std::vector<XmlPart> writtenParts();
  /// What `writtenParts` edited, in the order of the parts.
  [[nodiscard]] const std::vector<ShownEdit>& edits() const noexcept { return mEdits; }

  /// What text looks like otherwise than when the document was opened, at most `most` differences of it.
  [[nodiscard]] std::vector<LookImage::Difference> changedLooks(std::size_t most) const;

  /// Saves it as `out` in the form in which it was read. A file is replaced in one step. Throws `EditError` for what is
  /// refused and `ZTAArchiveException` for what fails; the old file is there then, whole.
  void save(const SaveOptions& options);

 protected:
  /// Throws as `refuseHalfRead`.
  EditableDocument(DocumentSource source, Ref<ZTDocument> document, const EditingRules& rules = modelEditingRules());

  [[nodiscard]] const DocumentSource& source() const noexcept { return mSource; }
  /// The styles as they were when the document was opened.
  [[nodiscard]] const std::vector<StyleAsRead>& before() const noexcept { return mBefore; }

  /// @name What a format provides
  /// The reader beside it notes for each style where it came from (`ZTDocument::recordOrigin`), for each place of the
  /// text its style (`recordUse`, one or several places at once), and keeps in use what something names that it does
  /// not understand (`ZTDocument::unknownUses`): edits move, rename and remove by these. A place whose look is given
  /// where it stands uses an anonymous style.
  /// @{

  /// The parts with what changed since `before()` written into them, each edit noted in `shown`. No byte changes that
  /// says nothing of what changed; a part that does not change is answered with its very bytes. Throws `EditError` for
  /// what a file cannot say.
  virtual std::vector<XmlPart> written(std::vector<ShownEdit>& shown) = 0;
  /// The document that these parts make, read as the one that is edited was.
  [[nodiscard]] virtual Ref<ZTDocument> readAgain(std::vector<XmlPart> parts) const = 0;
  /// The style that the place `styleUses()[use]` has in the document that the last written parts made; none where it is
  /// missing there.
  [[nodiscard]] virtual const OdfStyle* styleOfUse(std::size_t use, const ZTDocument& again) const = 0;
  /// Whether what lies there is a document of this format and form, and may be replaced by another.
  [[nodiscard]] virtual bool isReplaceable(const std::filesystem::path& path) const = 0;
  /// Whether an entry of a package, or a file in a folder, is a signature of the others.
  [[nodiscard]] virtual bool isSignature(std::string_view entry) const = 0;
  /// Whether a document is whole without its signatures.
  [[nodiscard]] virtual bool canDropSignatures() const { return true; }
  /// @}

 private:
  void check(std::vector<XmlPart> parts) const;
  void refuseTarget(const SaveOptions& options) const;
  void refuseWrittenMeanwhile() const;
  void keepBackup(const std::string& suffix) const;
  [[nodiscard]] std::vector<std::string> signatures() const;
  void saveFolder(const SaveOptions& options, const std::vector<XmlPart>& parts,
                  const std::vector<std::string>& dropped) const;

  DocumentSource mSource;
  Ref<ZTDocument> mDocument;
  std::vector<StyleAsRead> mBefore;
  LookImage mLooks;
  DocumentEditor mEditor;
  std::vector<ShownEdit> mEdits;
};

}  // namespace zt
