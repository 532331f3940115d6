// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <string>
#include <vector>

namespace zt {

/// Removes the styles that the text of a document does not use, directly or through children and references, as one
/// user action that can be undone. The roots of the families stay; so do named styles where `keepsNamed`. Answers what
/// was removed, in the order of removal.
std::vector<Ref<OdfStyle>> removeUnusedStyles(ZTDocument& document, bool keepsNamed);

}  // namespace zt
