// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Edits in words, as a command line or a script has them.

#include <document/editing/DocumentEditor.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// One edit: "rename Heading Title" as its words, with the line where it stands.
struct EditLine {
  std::size_t line = 0;
  std::vector<std::string> words;
};

/// The edits of a script: one a line, words apart by blanks or in double quotes (with "" for one inside), `#` before a
/// remark. Throws `EditError` with the line for a quote that does not end.
std::vector<EditLine> editLines(std::string_view script);

/// How an edit reads the document that it takes styles from.
using TemplateReader = std::function<Ref<ZTDocument>(const std::string& path)>;

/// Makes one edit. Throws `EditError` for one that is not known, lacks words or cannot be made.
///
///     set [--keep-look] STYLE PROPERTY=VALUE...   reparent [--keep-look] STYLE PARENT
///     rename OLD NEW                              remove [--keep-look] STYLE...
///     merge FROM... INTO                          promote STYLE NAME
///     demote STYLE...                             cleanup [--keep-named] [KEPT...]
///     dedupe [--ignore-revision-marks] [--lists]
///     apply [--add] [--remove-others] TEMPLATE [STYLE...]
void performEdit(DocumentEditor& editor, const std::vector<std::string>& words, const TemplateReader& readTemplate);

/// Makes all edits; the first that cannot be made ends it with an `EditError` that tells its line. The caller takes the
/// others back.
void performEdits(DocumentEditor& editor, const std::vector<EditLine>& lines, const TemplateReader& readTemplate);

}  // namespace zt
