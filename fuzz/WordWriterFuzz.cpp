// SPDX-License-Identifier: MIT
#include <document/Finding.h>
#include <wordprocessing/writing/EditableWordDocument.h>

#include <platform/NSUndoManager.h>
#include <support/ZTULog.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace zt;

/// One edit of some style of the document, as four bytes say.
void edit(EditableDocument& editable, const std::uint8_t* bytes) {
  constexpr std::array kAssignments = {
      "text.w.sz=17pt",        "text.w.b=true",       "paragraph.w.ind.firstLine=-3pt", "text.w.rFonts.ascii=Other",
      "paragraph.w.jc=center", "text.w.color=#123456"};
  DocumentEditor& editor = editable.editor();
  const auto& styles = editable.document().readStyles();
  if (styles.empty()) return;
  OdfStyle& style = *styles[bytes[1] % styles.size()];
  OdfStyle& other = *styles[bytes[2] % styles.size()];
  if (style.stylesheet() == nullptr || other.stylesheet() == nullptr) return;
  const KeepLook keepLook = bytes[3] % 2 == 0 ? KeepLook::no : KeepLook::yes;
  switch (bytes[0] % 6) {
    case 0: (void)editor.cleanup({.trimsLatent = keepLook == KeepLook::yes}); break;
    case 1: editor.rename(style, "New <" + std::to_string(bytes[3])); break;
    case 2: editor.remove(style, keepLook); break;
    case 3: editor.merge(style, other); break;
    case 4: editor.reparent(style, &other, keepLook); break;
    default: editor.set(style, {editor.assignment(style, kAssignments.at(bytes[3] % kAssignments.size()))}); break;
  }
}

}  // namespace

/// Eight bytes that choose two edits, and any bytes as the parts of a WordprocessingML document, a line of "----"
/// between two: main part, styles, numbering, settings. A document that can be read is written back as it was; an
/// edited one can be read again (which writing tries itself) or is refused; undo brings the first bytes back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kEdits = 8;
  constexpr std::string_view kBetween = "\n----\n";
  constexpr std::array kKinds = {WordPartKind::document, WordPartKind::styles, WordPartKind::numbering,
                                 WordPartKind::settings};
  if (size <= kEdits) return 0;
  ZTULogRecorder quiet;
  std::vector<WordPackage::Part> parts;
  std::string_view rest(reinterpret_cast<const char*>(data) + kEdits, size - kEdits);
  for (const WordPartKind kind : kKinds) {
    const std::string_view part = rest.substr(0, rest.find(kBetween));
    parts.push_back({kind, {"part", "input", std::string(part)}});
    rest.remove_prefix(std::min(rest.size(), part.size() + kBetween.size()));
  }
  const std::vector<WordPackage::Part> before = parts;
  std::unique_ptr<EditableDocument> document;
  try {
    document = EditableWordDocument::fromParts(std::move(parts), "input");
  } catch (const ReadError&) {
    return 0;
  }
  const auto check = [&] {
    const std::vector<XmlPart> now = document->writtenParts();
    for (std::size_t index = 0; index < now.size(); ++index) {
      if (now[index].bytes != before[index].xml.bytes) std::abort();
    }
  };
  check();
  NSUndoManager& undo = *document->document().undoManager();
  try {
    undo.performInGroup([&] {
      edit(*document, data);
      edit(*document, data + 4);
    });
    (void)document->writtenParts();
  } catch (const EditError&) {
  } catch (const ReadError&) {
  }
  if (undo.canUndo()) undo.undo();
  check();
  return 0;
}
