// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>
#include <tool/commands/Command.h>

#include <functional>
#include <string>

namespace zt {

/// The options of commands that write documents, and what they do once the document is edited.
class WriteOptions {
 public:
  void addTo(CLI::App& command, const char* outHelp = "Write the document that results, in the form of FILE");

  /// Whether a document is to be written or what would change is to be shown; not for an archive, whose name ends in
  /// .zts.
  [[nodiscard]] bool concernDocument() const;
  [[nodiscard]] const std::string& out() const noexcept { return mOut; }
  [[nodiscard]] bool isForced() const noexcept { return mIsForced; }
  /// Whether nothing is to be written.
  [[nodiscard]] bool areDry() const noexcept { return mIsDry || (mOut.empty() && !mIsInPlace); }

  /// Makes the edit in one undo group. What cannot be made is taken back and is a `UsageError`.
  void perform(EditableDocument& document, const std::function<void(DocumentEditor&)>& edit) const;
  /// Saves the document, or shows what would change, and what text would look like.
  void finish(EditableDocument& document, const std::string& file, const Console& console) const;

 private:
  std::string mOut;
  std::string mBackup;
  bool mIsInPlace = false;
  bool mIsForced = false;
  bool mIsDry = false;
  bool mDropsSignature = false;
};

/// Tells which text looks otherwise than in the file.
void printChangedLooks(const EditableDocument& document, const Console& console);

/// Refuses to write an archive of the document, with a `UsageError` where it would take the place of something that is
/// no archive, unless that is forced, and with a `ReadError` for half of a document.
void refuseArchive(const ZTDocument& document, const std::string& out, bool isForced);

}  // namespace zt
