// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>
#include <wordprocessing/package/WordPackage.h>
#include <wordprocessing/writing/WordDifference.h>

#include <string>
#include <vector>

namespace zt {

/// The bytes of a part with the differences written into them; nothing else changes. What was edited is added to
/// `shown`. Throws `EditError` for what cannot be written.
std::string writtenWordPart(const XmlPart& part, WordPartKind kind, const WordDifference& difference,
                            std::vector<ShownEdit>& shown);

}  // namespace zt
