// SPDX-License-Identifier: MIT
#pragma once

#include <platform/ZTExport.h>

/// @file
/// The version of the library. This is its only place: the build reads these three lines.

#define ZT_VERSION_MAJOR 0
#define ZT_VERSION_MINOR 1
#define ZT_VERSION_PATCH 0

namespace zt {

/// The version of the library that is linked, for example "0.1.0". It can differ from the macros above, which tell
/// what a program was compiled against. The text lives as long as the process.
ZT_EXPORT const char* versionString() noexcept;

}  // namespace zt
