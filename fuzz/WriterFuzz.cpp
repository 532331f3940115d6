// SPDX-License-Identifier: MIT
#include "EditAndUndo.h"
#include "Silence.h"

#include <document/Finding.h>
#include <opendocument/writing/EditableOpenDocument.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace zt;

/// One edit of some style of the document, as four bytes say.
void edit(EditableDocument& editable, const std::uint8_t* bytes) {
  DocumentEditor& editor = editable.editor();
  const auto choice = fuzzing::choiceOf(editable, bytes);
  if (!choice) return;
  const auto& [style, other, keepLook] = *choice;
  switch (bytes[0] % 10) {
    case 0: (void)editor.dedupe({.ignoresRevisionMarks = keepLook == KeepLook::yes}); break;
    case 1: (void)editor.cleanup({.keepsNamed = keepLook == KeepLook::yes}); break;
    case 2: editor.rename(style, "New <" + std::to_string(bytes[3])); break;
    case 3: editor.remove(style, keepLook); break;
    case 4: editor.merge(style, other); break;
    case 5: editor.reparent(style, &other, keepLook); break;
    case 6: (void)editor.promote(style, "Named " + std::to_string(bytes[3])); break;
    case 7: editor.demote(style); break;
    case 8: (void)editor.cleanupFonts(); break;
    default: editor.set(style, {editor.assignment(style, "text.fo.color=#123456")}, keepLook); break;
  }
}

}  // namespace

/// Eight bytes that choose two edits, and any bytes as a flat OpenDocument file. A document that can be read is written
/// back as it was; an edited one can be read again (which writing tries itself) or is refused; undo brings the first
/// bytes back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kEdits = 8;
  if (size <= kEdits) return 0;
  const fuzzing::Silence silence;
  const std::string text(reinterpret_cast<const char*>(data) + kEdits, size - kEdits);
  std::unique_ptr<EditableDocument> document;
  try {
    document = EditableOpenDocument::fromFlatText(text, "input");
  } catch (const ReadError&) {
    return 0;
  }
  fuzzing::editAndUndo(*document, {text}, data, edit);
  return 0;
}
