// SPDX-License-Identifier: MIT
#pragma once

#include <document/DocumentFormat.h>

namespace zt {

/// WordprocessingML packages of ECMA-376, transitional and strict: documents and templates, with macros or without.
const DocumentFormat& wordFormat();

}  // namespace zt
