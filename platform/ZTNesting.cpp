// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/ZTFormat.h>
#include <platform/ZTNesting.h>

#include <pthread.h>

#include <algorithm>

namespace zt {

namespace {

// What is kept for raising, unwinding and for what the operation does besides nesting. Frames are
// several times as large under the address sanitizer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uintptr_t kReserve = 1024 * 1024;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr std::uintptr_t kReserve = 1024 * 1024;
#else
constexpr std::uintptr_t kReserve = 256 * 1024;
#endif
#else
constexpr std::uintptr_t kReserve = 256 * 1024;
#endif

struct Bounds {
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;
};

Bounds boundsOfThisStack() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  void* low = nullptr;
  std::size_t size = 0;
  const bool known = pthread_attr_getstack(&attributes, &low, &size) == 0;
  pthread_attr_destroy(&attributes);
  if (!known) return {};
  return {reinterpret_cast<std::uintptr_t>(low), reinterpret_cast<std::uintptr_t>(low) + size};
}

}  // namespace

thread_local constinit NestingGuard::State NestingGuard::tState{UINTPTR_MAX, UINTPTR_MAX, {}};

void NestingGuard::checkSlowly(const char* operation, std::uint32_t count, std::uintptr_t here) {
  if (tState.stackLimit == UINTPTR_MAX) {
    const Bounds bounds = boundsOfThisStack();
    // A small stack keeps half of itself. Unknown bounds leave the count alone to hold.
    tState.stackLimit = bounds.low + std::min(kReserve, (bounds.high - bounds.low) / 2);
    tState.stackEnd = bounds.low;
  }
  if (count >= kDeepestNesting) {
    throw NSInternalInconsistencyException(
        format("%s -- nested deeper than %d levels; a chain of styles or values is too long for it.", operation,
               kDeepestNesting));
  }
  // Below the end of the thread's own stack: a coroutine with a stack of its own, of unknown bounds.
  if (here < tState.stackLimit && here >= tState.stackEnd) {
    throw NSInternalInconsistencyException(format(
        "%s -- nested %d levels deep, and the thread's stack is almost used up; a chain of styles or values is too "
        "long for it.",
        operation, count));
  }
}

}  // namespace zt
