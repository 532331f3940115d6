// SPDX-License-Identifier: MIT
#include "EditAndUndo.h"
#include "Silence.h"

#include <document/Finding.h>
#include <wordprocessing/writing/EditableWordDocument.h>

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
  const auto choice = fuzzing::choiceOf(editable, bytes);
  if (!choice) return;
  const auto& [style, other, keepLook] = *choice;
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
  const fuzzing::Silence silence;
  std::vector<WordPackage::Part> parts;
  std::string_view rest(reinterpret_cast<const char*>(data) + kEdits, size - kEdits);
  for (const WordPartKind kind : kKinds) {
    const std::string_view part = rest.substr(0, rest.find(kBetween));
    parts.push_back({kind, {"part", "input", std::string(part)}});
    rest.remove_prefix(std::min(rest.size(), part.size() + kBetween.size()));
  }
  std::vector<std::string> asRead;
  for (const WordPackage::Part& part : parts) asRead.push_back(part.xml.bytes);
  std::unique_ptr<EditableDocument> document;
  try {
    document = EditableWordDocument::fromParts(std::move(parts), "input");
  } catch (const ReadError&) {
    return 0;
  }
  fuzzing::editAndUndo(*document, asRead, data, edit);
  return 0;
}
