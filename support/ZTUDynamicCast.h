// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <type_traits>

namespace zt {

/// The object as a `T` if it is an instance of that class or of a class derived from it, none
/// otherwise, and none for none. `T` may also be an interface that is no `NSObject`.
template <class T>
T* ZTUDynamicCast(NSObject* object) noexcept {
  return dynamic_cast<T*>(object);
}

template <class T>
const T* ZTUDynamicCast(const NSObject* object) noexcept {
  return dynamic_cast<const T*>(object);
}

/// The same for a reference; the answer shares ownership.
template <class T, class Object>
requires std::is_base_of_v<NSObject, T> && std::is_base_of_v<NSObject, Object>
auto ZTUDynamicCast(const Ref<Object>& object) noexcept {
  using Result = std::conditional_t<std::is_const_v<Object>, const T, T>;
  return Ref<Result>(dynamic_cast<Result*>(object.get()));
}

}  // namespace zt
