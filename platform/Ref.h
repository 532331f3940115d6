// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// `Ref<T>`: a counted reference. Copying shares ownership, an empty one stands for "none".

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <atomic>
#include <cstdint>
#include <utility>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace zt {

/// Whether the process has one thread and remains so while the caller starts none. A C library that does not tell
/// answers no, and everything takes the way for several.
inline bool isSingleThreaded() noexcept {
#if __has_include(<sys/single_threaded.h>)
  return __libc_single_threaded;
#else
  return false;
#endif
}

template <class T>
using Ref = boost::intrusive_ptr<T>;

/// One counting policy for everything: plain while the process has one thread, atomic from the
/// second thread on. Documents may live on different threads and share immutable values.
namespace counting {

inline void increment(std::uint32_t& count) noexcept {
  if (isSingleThreaded()) {
    ++count;
  } else {
    std::atomic_ref(count).fetch_add(1, std::memory_order_relaxed);
  }
}

/// Whether this was the last reference.
inline bool decrement(std::uint32_t& count) noexcept {
  if (isSingleThreaded()) return --count == 0;
  return std::atomic_ref(count).fetch_sub(1, std::memory_order_acq_rel) == 1;
}

/// What the count of an object is set to when its destruction begins. References that are taken and given back
/// meanwhile, by whatever the destruction calls, count up and down from here and never reach zero a second time.
inline constexpr std::uint32_t kDying = std::uint32_t{1} << 31;
inline bool isAlive(std::uint32_t count) noexcept { return static_cast<std::int32_t>(count) > 0; }

/// Takes a reference unless the last one is gone already. For walks over sets that do not own
/// their members: an object whose destruction has begun must not be revived.
inline bool incrementIfAlive(std::uint32_t& count) noexcept {
  if (isSingleThreaded()) return isAlive(count) && ++count != 0;
  const std::atomic_ref shared(count);
  std::uint32_t seen = shared.load(std::memory_order_relaxed);
  while (isAlive(seen)) {
    if (shared.compare_exchange_weak(seen, seen + 1, std::memory_order_acq_rel, std::memory_order_relaxed)) return true;
  }
  return false;
}

}  // namespace counting

/// The base of small counted objects that are no `NSObject`: no virtual functions, no class.
/// `Self` must be `final`; it is destroyed through its own destructor.
template <class Self>
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  friend void intrusive_ptr_add_ref(const Self* object) noexcept { counting::increment(object->Counted::mCount); }
  friend void intrusive_ptr_release(const Self* object) noexcept {
    if (counting::decrement(object->Counted::mCount)) delete object;
  }

  /// The number of references, for tests and for copy-on-write.
  [[nodiscard]] std::uint32_t referenceCount() const noexcept { return mCount; }

 protected:
  Counted() = default;
  ~Counted() = default;

 private:
  mutable std::uint32_t mCount = 0;
};

}  // namespace zt
