// SPDX-License-Identifier: MIT
#include <platform/ZTVersion.h>

#define ZT_TEXT_OF(value) #value
#define ZT_VERSION_TEXT(major, minor, patch) ZT_TEXT_OF(major) "." ZT_TEXT_OF(minor) "." ZT_TEXT_OF(patch)

namespace zt {

const char* versionString() noexcept { return ZT_VERSION_TEXT(ZT_VERSION_MAJOR, ZT_VERSION_MINOR, ZT_VERSION_PATCH); }

}  // namespace zt
