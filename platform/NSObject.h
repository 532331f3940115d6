// SPDX-License-Identifier: MIT
#pragma once

#include <platform/Ref.h>
#include <platform/ZTExport.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zt {

class ZTClass;
class ZTSStyle;

/// The counted root of everything that can be a property value, an observer, a target of undo or
/// an element of an archive.
///
/// An object is made with `make<T>(...)` or by its class object, is held by `Ref`, and is destroyed
/// when its last `Ref` goes. Destruction never nests deeper than a fixed bound: a chain of a million
/// objects that own one another is released in a loop. An object is destroyed once, even if its destruction runs code
/// that takes a reference to it and gives that back.
class ZT_EXPORT NSObject {
 public:
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;

  /// @name Questions of the object
  /// @{

  /// The class object. The base answers that of `NSObject`.
  virtual const ZTClass& classObject() const;

  /// Whether the two are interchangeable. The base compares identity. None is equal to nothing.
  virtual bool isEqual(const NSObject* other) const;

  /// Equal objects hash alike.
  virtual std::size_t hash() const;

  /// A hash that agrees with `isEqual` and never changes while the object lives, so that an index
  /// may keep it. Immutable values answer `hash()`; everything else answers one common constant,
  /// since its equality may change with its state.
  virtual std::size_t stableHash() const;

  /// A text for reports and logs: what `%@` prints.
  virtual std::string description() const;

  /// A copy, or the object itself where it is immutable. The base raises
  /// `NSInvalidArgumentException`, since a plain object cannot be copied.
  virtual Ref<NSObject> copy() const;
  /// @}

  /// The class object of `NSObject` itself.
  static const ZTClass& nsObjectClass();

  /// Whether the object is one of the immutable values of the platform layer (number, string,
  /// colour, list, the null sentinel): such a value holds no state that can change and is no style.
  [[nodiscard]] bool isPlainValue() const noexcept { return mTag >= Tag::null; }

  /// The number of references, for tests and for finding groups that only hold one another; 0 once the object dies.
  [[nodiscard]] std::uint32_t referenceCount() const noexcept { return counting::isAlive(mCount) ? mCount : 0; }

  /// Whether a listener of the notification centre names this object; kept by the centre alone.
  [[nodiscard]] bool hasListeners() const noexcept {
    return std::atomic_ref(mHasListeners).load(std::memory_order_acquire);
  }

 protected:
  /// Private type tags: what the values' own `isEqual` asks instead of a dynamic cast, and how the style model tells
  /// the values that are styles. Plain values stand last.
  enum class Tag : std::uint8_t {
    object,
    style,
    aggregateStyle,
    null,
    string,
    boolean,
    integer,
    real,
    colour,
    array,
    otherValue
  };

  explicit NSObject(Tag tag = Tag::object) noexcept : mTag(tag) {}
  virtual ~NSObject();

  [[nodiscard]] Tag tag() const noexcept { return mTag; }
  static Tag tagOf(const NSObject& object) noexcept { return object.mTag; }

 private:
  friend class NSNotificationCenter;
  template <class T>
  friend Ref<T> retainIfAlive(T* object) noexcept;
  friend void intrusive_ptr_add_ref(const NSObject* object) noexcept;
  friend void intrusive_ptr_release(const NSObject* object) noexcept;

  void setHasListeners(bool has) const noexcept {
    std::atomic_ref(mHasListeners).store(has, std::memory_order_release);
  }
  static void dispose(const NSObject* object) noexcept;

  mutable std::uint32_t mCount = 0;
  Tag mTag;
  mutable bool mHasListeners = false;

 protected:
  /// Two bytes that would be padding otherwise, and of which there would be millions. They are the styles' own: what a
  /// style keeps here decides whether it is locked, so that other classes, those derived from a style too, find no
  /// door.
  class SmallBits {
   public:
    SmallBits() = default;
    SmallBits(const SmallBits&) = delete;
    SmallBits& operator=(const SmallBits&) = delete;

   private:
    friend class ZTSStyle;
    std::uint8_t mPlainGroups = 0;
    std::uint8_t mState = 0;
  };
  SmallBits mSmall;
};

static_assert(sizeof(NSObject) == sizeof(void*) + 8, "the small bits stand where padding stood");

inline void intrusive_ptr_add_ref(const NSObject* object) noexcept { counting::increment(object->mCount); }
inline void intrusive_ptr_release(const NSObject* object) noexcept {
  if (counting::decrement(object->mCount)) NSObject::dispose(object);
}

/// A reference to a member of a set that does not own it; none if its destruction has begun.
template <class T>
Ref<T> retainIfAlive(T* object) noexcept {
  if (object == nullptr || !counting::incrementIfAlive(static_cast<const NSObject*>(object)->mCount)) return {};
  return Ref<T>(object, false);
}

/// Makes a counted object with the constructor that the arguments fit.
template <class T, class... Arguments>
requires(!requires { T::styleClass(); }) Ref<T> make(Arguments&&... arguments) {
  return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

/// The address as reports print it, for `%p` and `%#x`.
inline const void* address(const void* object) noexcept { return object; }

/// Whether both are the same object (both none included) or the first says that it equals the second.
inline bool sameOrEqual(const NSObject* left, const NSObject* right) {
  return left == right || (left != nullptr && left->isEqual(right));
}

}  // namespace zt
