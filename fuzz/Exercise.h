// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>
#include <document/archive/DocumentArchive.h>

#include <platform/NSException.h>
#include <platform/NSUndoManager.h>
#include <support/ZTUAssertionHandler.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace zt::fuzzing {

/// Ends the run where the stylesheet or an ancestor is not valid. References that lead out of the stylesheets, and
/// names that two styles share, are what a file may say.
inline void mustBeValid(const ZTSStylesheet& sheet) {
  ZTUAssertionRecorder reports;
  for (const ZTSStylesheet* each = &sheet; each != nullptr; each = each->parent()) {
    each->validate();
    if (!each->indexesAreRight()) std::abort();
  }
  for (const std::string& text : reports.descriptions()) {
    if (text.find("Referenced style") != std::string::npos || text.find("same name") != std::string::npos) continue;
    std::fprintf(stderr, "%s\n", text.c_str());
    std::abort();
  }
}

/// Changes what was read, undoes that and copies it: everything must be valid, and undo lead back to the same archive.
inline void exercise(ZTDocument& document) {
  ZTSStylesheet& sheet = document.stylesheet();
  mustBeValid(sheet);
  const std::string before = archiveBytes(document, {.isDiffable = true});
  NSUndoManager& undo = *document.undoManager();
  std::size_t place = 0;
  for (const Ref<ZTSStyle>& style : sheet.retainedStyles()) {
    if (++place > 6) break;
    const ZTUAssertionRecorder refusals;
    try {
      undo.performInGroup([&] {
        style->clearOverriddenPropertyValues();
        if (place % 3 == 0) sheet.removeStyle(style);
        if (place % 3 == 1 && style->isIdentified()) sheet.anonymizeStyle(style);
      });
    } catch (const NSException&) {
      // Refused; undo goes on from what was done.
    }
    mustBeValid(sheet);
  }
  while (undo.canUndo()) undo.undo();
  mustBeValid(sheet);
  if (archiveBytes(document, {.isDiffable = true}) != before) std::abort();
  const Ref<NSObject> copied = sheet.copy();
  if (const auto* copy = dynamic_cast<const ZTSStylesheet*>(copied.get())) mustBeValid(*copy);
}

}  // namespace zt::fuzzing
