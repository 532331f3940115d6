// SPDX-License-Identifier: MIT
#include <tests/AllocationFailures.h>

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::uint64_t kForEver = std::numeric_limits<std::uint64_t>::max();
thread_local std::uint64_t tGood = kForEver;
thread_local bool tFailsOnce = false;
thread_local bool tHasFailed = false;
thread_local std::int64_t tLive = 0;

void* allocate(std::size_t size) {
  if (tGood == 0) {
    tHasFailed = true;
    if (tFailsOnce) tGood = kForEver;
    throw std::bad_alloc();
  }
  if (tGood != kForEver) --tGood;
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  ++tLive;
  return memory;
}

void release(void* memory) noexcept {
  if (memory != nullptr) --tLive;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace zt::test {

FailingAllocations::FailingAllocations(std::uint64_t good, Extent extent) noexcept {
  tGood = good;
  tFailsOnce = extent == Extent::one;
  tHasFailed = false;
}
FailingAllocations::~FailingAllocations() { tGood = kForEver; }
bool FailingAllocations::hasFailed() const noexcept { return tHasFailed; }

std::int64_t liveAllocations() noexcept { return tLive; }

}  // namespace zt::test
