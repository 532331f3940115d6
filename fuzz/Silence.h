// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTULog.h>

namespace zt::fuzzing {

/// Takes the log of its thread while it lives, and drops it: entries hold what they are about, which a recorder would
/// keep alive until after the stylesheets that free circles of styles.
class Silence final : public ZTULogSink {
 public:
  Silence() : mScope(*this) {}
  void write(const ZTULogEntry& /*entry*/) override {}

 private:
  Scope mScope;
};

}  // namespace zt::fuzzing
