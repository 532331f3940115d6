// SPDX-License-Identifier: MIT
#pragma once

namespace zt {

/// The archiver's metadata under this key hold the containers of each stylesheet that was written, as a pair of nodes.
inline constexpr const char* kStylesheetContainers = "ZTSStylesheetContainers";

/// Puts the archive settings of the style classes back as at the start of the process, for tests.
void resetStyleArchivingSettings();

}  // namespace zt
