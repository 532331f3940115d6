// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditingRules.h>

namespace zt {

/// How this format names styles: w:styleId for files, made of the name that people see as word processors make it, and
/// w:name for people. Numbering definitions and instances have numbers and cannot be renamed. Default styles, numbering
/// and styles that the list of latent styles names are used without being named.
const EditingRules& wordEditingRules();

}  // namespace zt
