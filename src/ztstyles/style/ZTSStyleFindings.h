// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>

namespace zt {

/// For whoever compares many styles one after the other and changes none meanwhile, as the comparison of two
/// stylesheets does: while it is alive, pairs of styles that were found equal on the way up a long chain are
/// remembered for the next comparison. Without that each of N styles in one chain would compare all above it.
///
/// Holds the lock of all comparisons, so that other threads' wait. Implemented in ZTSStyleComparison.cpp.
class ZTSStyleFindings {
 public:
  ZTSStyleFindings();
  ~ZTSStyleFindings();
  ZTSStyleFindings(const ZTSStyleFindings&) = delete;
  ZTSStyleFindings& operator=(const ZTSStyleFindings&) = delete;

 private:
  std::lock_guard<std::recursive_mutex> mHold;
};

}  // namespace zt
