// SPDX-License-Identifier: MIT
#pragma once

#include <document/Finding.h>
#include <document/editing/EditableDocument.h>
#include <platform/NSUndoManager.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace zt::fuzzing {

/// What the bytes after the first of an edit choose.
struct EditChoice {
  OdfStyle& style;
  OdfStyle& other;
  KeepLook keepLook;
};

/// None where the document has no styles, or one of the two has left it.
inline std::optional<EditChoice> choiceOf(const EditableDocument& editable, const std::uint8_t* bytes) {
  const auto& styles = editable.document().readStyles();
  if (styles.empty()) return std::nullopt;
  OdfStyle& style = *styles[bytes[1] % styles.size()];
  OdfStyle& other = *styles[bytes[2] % styles.size()];
  if (style.stylesheet() == nullptr || other.stylesheet() == nullptr) return std::nullopt;
  return EditChoice{style, other, bytes[3] % 2 == 0 ? KeepLook::no : KeepLook::yes};
}

/// Aborts unless the document is written as it was read, and again after two edits of four bytes each were made,
/// written or refused, and undone.
template <class Edit>
void editAndUndo(EditableDocument& editable, const std::vector<std::string>& asRead, const std::uint8_t* bytes,
                 Edit edit) {
  const auto check = [&] {
    const std::vector<XmlPart> parts = editable.writtenParts();
    if (parts.size() != asRead.size()) std::abort();
    for (std::size_t index = 0; index < parts.size(); ++index) {
      if (parts[index].bytes != asRead[index]) std::abort();
    }
  };
  check();
  NSUndoManager& undo = *editable.document().undoManager();
  try {
    undo.performInGroup([&] {
      edit(editable, bytes);
      edit(editable, bytes + 4);
    });
    (void)editable.writtenParts();
  } catch (const EditError&) {
  } catch (const ReadError&) {
  }
  if (undo.canUndo()) undo.undo();
  check();
}

}  // namespace zt::fuzzing
