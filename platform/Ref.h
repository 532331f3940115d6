#pragma once
/// @file
/// `Ref<T>`: a counted reference. Copying shares ownership, an empty one stands for "none".

#include <sys/single_threaded.h>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <utility>

namespace zt {

template <class T>
using Ref = boost::intrusive_ptr<T>;

/// One counting policy for everything: plain while the process has one thread, atomic from the
/// second thread on. Documents may live on different threads and share immutable values.
namespace counting {

inline void increment(std::uint32_t& count) noexcept {
  if (__libc_single_threaded) {
    ++count;
  } else {
    __atomic_fetch_add(&count, 1u, __ATOMIC_RELAXED);
  }
}

/// Whether this was the last reference.
inline bool decrement(std::uint32_t& count) noexcept {
  if (__libc_single_threaded) return --count == 0;
  return __atomic_fetch_sub(&count, 1u, __ATOMIC_ACQ_REL) == 1;
}

/// Takes a reference unless the last one is gone already. For walks over sets that do not own
/// their members: an object whose destruction has begun must not be revived.
inline bool incrementUnlessZero(std::uint32_t& count) noexcept {
  if (__libc_single_threaded) return count != 0 && ++count != 0;
  std::uint32_t seen = __atomic_load_n(&count, __ATOMIC_RELAXED);
  while (seen != 0) {
    if (__atomic_compare_exchange_n(&count, &seen, seen + 1, true, __ATOMIC_ACQ_REL, __ATOMIC_RELAXED)) return true;
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
