// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace zt::test {

/// While it lives, this thread's allocations with `new` fail, from the one on before which `good` others succeed, or
/// that one alone. Programs that use it are linked with AllocationFailures.cpp.
class FailingAllocations {
 public:
  enum class Extent : bool { one, all };
  explicit FailingAllocations(std::uint64_t good = 0, Extent extent = Extent::all) noexcept;
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  /// Whether one has failed.
  [[nodiscard]] bool hasFailed() const noexcept;
};

/// Blocks that this thread has got with `new` and not given back.
std::int64_t liveAllocations() noexcept;

}  // namespace zt::test
