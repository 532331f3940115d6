#pragma once

namespace zt {

/// Puts the archive settings of the style classes back as at the start of the process, for tests.
void resetStyleArchivingSettings();

}  // namespace zt
