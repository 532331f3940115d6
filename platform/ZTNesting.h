// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// A bound on how deep an operation nests that must recurse: walks over plain classes iterate, but
/// an overriding class expects the inherited operation to have finished when it returns, so a chain
/// of such objects is as deep on the stack as it is long.

#include <platform/ZTExport.h>

#include <cstdint>

namespace zt {

/// How many calls of one kind may be under way at once on a thread.
inline constexpr std::uint32_t kDeepestNesting = 10'000;

/// What is counted together. The kinds are counted apart, so that an observer at the end of a long
/// chain of changes may still look up a value through an equally long chain.
enum class Nesting : std::uint8_t { lookup, linking, counting, telling, equality, description, archive, other };
inline constexpr int kNestingKinds = 8;

/// Counts one call of an operation while it lives. Cost: a handful of instructions.
///
/// The constructor raises `NSInternalInconsistencyException` if the call would be nested deeper than
/// `kDeepestNesting` calls of its kind, or if less of the thread's stack is left than a reserve, which
/// happens earlier where frames are large, as they are under a sanitizer. The count is right again
/// when the exception leaves the constructor.
class ZT_EXPORT NestingGuard {
 public:
  /// `operation` is the keyword name, for the text of the exception.
  explicit NestingGuard(const char* operation, Nesting kind = Nesting::other)
      : mCount(&tState.counts[static_cast<std::uint8_t>(kind)]) {
    const auto here = placeOnStack();
    if (*mCount >= kDeepestNesting || here < tState.stackLimit) checkSlowly(operation, *mCount, here);
    ++*mCount;
  }
  ~NestingGuard() { --*mCount; }

  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;

  /// How many calls of the kind are under way on this thread.
  static std::uint32_t depth(Nesting kind = Nesting::other) noexcept {
    return tState.counts[static_cast<std::uint8_t>(kind)];
  }

 private:
  static std::uintptr_t placeOnStack() noexcept {
#if defined(__GNUC__)
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
#else
    const volatile char here = 0;
    return reinterpret_cast<std::uintptr_t>(&here);
#endif
  }

  struct State {
    std::uintptr_t stackLimit;  // the lowest good address; at first beyond all, so that it is looked up
    std::uintptr_t stackEnd;
    std::uint32_t counts[kNestingKinds];
  };

  // Few bytes, so that this model holds for a library that is loaded late, too; and no call per access.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit State tState;

  static void checkSlowly(const char* operation, std::uint32_t count, std::uintptr_t here);

  std::uint32_t* mCount;
};

}  // namespace zt
