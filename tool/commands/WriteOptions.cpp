// SPDX-License-Identifier: MIT
#include <tool/commands/WriteOptions.h>

#include <document/archive/DocumentArchive.h>

#include <platform/NSUndoManager.h>

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <ostream>

namespace zt {

namespace {

bool isArchiveName(const std::string& name) { return name.ends_with(".zts") || name.ends_with(".zts.gz"); }

/// One line of a piece of a file, short enough to be read.
std::string shownPiece(const std::string& text) {
  constexpr std::size_t kLongest = 160;
  std::string line;
  for (const char byte : text) line += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
  if (line.size() <= kLongest) return line;
  std::size_t end = kLongest;
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
  return line.substr(0, end) + "...";
}

}  // namespace

void WriteOptions::addTo(CLI::App& command, const char* outHelp) {
  CLI::Option* out = command.add_option("-o,--out", mOut, outHelp);
  CLI::Option* inPlace = command.add_flag("--in-place", mIsInPlace, "Write it over FILE")->excludes(out);
  command.add_option("--backup", mBackup, "Keep FILE as it was, with this behind its name")->needs(inPlace);
  command.add_flag("--force", mIsForced, "OUT may be something that is no such document");
  command.add_flag("--drop-signature", mDropsSignature, "Leave out the signature of a signed document");
  command.add_flag("--dry-run", mIsDry, "Write nothing; show what would change");
}

bool WriteOptions::concernDocument() const { return mIsDry || mIsInPlace || (!mOut.empty() && !isArchiveName(mOut)); }

void refuseArchive(const ZTDocument& document, const std::string& out, bool isForced) {
  refuseHalfRead(document);
  std::error_code ignored;
  if (isForced || !std::filesystem::is_regular_file(out, ignored)) return;
  std::ifstream file(out, std::ios::binary);
  std::string text(400, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (!text.empty() && !isArchive(out))
    throw UsageError(out + " is there and is no archive; with --force it is replaced");
}

void printChangedLooks(const EditableDocument& document, const Console& console) {
  constexpr std::size_t kMost = 200;
  for (const LookImage::Difference& each : document.changedLooks(kMost)) {
    if (each.key)
      console.out << fmt::format("{} looks different: {} {} -> {}\n", each.style, each.key.view(), each.before,
                                 each.after);
  }
}

void WriteOptions::perform(EditableDocument& document, const std::function<void(DocumentEditor&)>& edit) const {
  NSUndoManager& undo = *document.document().undoManager();
  try {
    undo.performInGroup([&] { edit(document.editor()); });
  } catch (const EditError& error) {
    undo.undo();
    throw UsageError(error.what());
  }
}

void WriteOptions::finish(EditableDocument& document, const std::string& file, const Console& console) const {
  try {
    if (!areDry()) {
      return document.save({.out = mIsInPlace ? file : mOut,
                            .isInPlace = mIsInPlace,
                            .isForced = mIsForced,
                            .dropsSignature = mDropsSignature,
                            .backupSuffix = mBackup});
    }
    (void)document.writtenParts();
  } catch (const EditError& error) {
    throw UsageError(error.what());
  }
  for (const ShownEdit& edit : document.edits()) {
    console.out << edit.place.text() << '\n';
    if (!edit.before.empty()) console.out << "  - " << shownPiece(edit.before) << '\n';
    if (!edit.after.empty()) console.out << "  + " << shownPiece(edit.after) << '\n';
  }
  if (document.edits().empty()) console.out << "nothing would change\n";
  printChangedLooks(document, console);
}

}  // namespace zt
