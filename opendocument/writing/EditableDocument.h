// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/DocumentEditor.h>
#include <document/editing/LookImage.h>
#include <opendocument/package/Package.h>
#include <opendocument/writing/PartWriter.h>

#include <filesystem>
#include <memory>
#include <string>
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

/// An OpenDocument text that can be edited and saved. Holds its bytes.
class EditableDocument {
 public:
  /// Throws `ReadError` for what cannot be read to its end without an error: half of a document is never written.
  static std::unique_ptr<EditableDocument> open(const std::filesystem::path& path);
  /// The same for a flat document in memory.
  static std::unique_ptr<EditableDocument> fromFlatText(std::string bytes, const std::string& shown);

  [[nodiscard]] ZTDocument& document() const noexcept { return *mDocument; }
  [[nodiscard]] DocumentEditor& editor() noexcept { return mEditor; }

  /// The parts as they are to be written, in the order of reading, those that do not change included. Checked: what is
  /// written is read again, says what the document says, and looks as it looked but for what the edits meant. Throws
  /// `EditError` where that is not so. An unchanged document gives the very bytes.
  std::vector<XmlPart> writtenParts();
  /// What `writtenParts` edited, in the order of the parts.
  [[nodiscard]] const std::vector<ShownEdit>& edits() const noexcept { return mEdits; }

  /// Saves it as `out` in the form in which it was read. A file is replaced in one step. Throws `EditError` for what is
  /// refused and `ZTAArchiveException` for what fails; the old file is there then, whole.
  void save(const SaveOptions& options);

 private:
  EditableDocument(Package package, std::string container);
  void check(const std::vector<XmlPart>& parts) const;
  void refuseTarget(const SaveOptions& options) const;
  void saveFolder(const SaveOptions& options, const std::vector<XmlPart>& parts, bool dropsSignature) const;
  [[nodiscard]] bool isSigned() const;

  std::filesystem::path mPath;
  Package::Kind mKind;
  std::string mContainer;  // the bytes of a package
  std::vector<XmlPart> mParts;
  Ref<ZTDocument> mDocument;
  std::vector<StyleAsRead> mBefore;
  LookImage mLooks;
  DocumentEditor mEditor;
  std::vector<ShownEdit> mEdits;
};

}  // namespace zt
