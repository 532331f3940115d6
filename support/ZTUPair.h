// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

/// An immutable pair that holds two objects, either of which may be none.
class ZT_EXPORT ZTUPair final : public NSObject {
 public:
  static Ref<ZTUPair> pairWithFirstSecond(Ref<NSObject> first, Ref<NSObject> second);

  [[nodiscard]] NSObject* first() const noexcept { return mFirst.get(); }
  [[nodiscard]] NSObject* second() const noexcept { return mSecond.get(); }

  static const ZTClass& pairClass();
  const ZTClass& classObject() const override;
  /// Pairs are equal when their members are.
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSObject> copy() const override;

 private:
  ZTUPair(Ref<NSObject> first, Ref<NSObject> second) noexcept : mFirst(std::move(first)), mSecond(std::move(second)) {}
  ~ZTUPair() override = default;

  Ref<NSObject> mFirst;
  Ref<NSObject> mSecond;
};

/// A value of any type as an object, so that a set can stand in an archiver's metadata.
template <class T>
class ZTUBox final : public NSObject {
 public:
  ZTUBox() = default;
  explicit ZTUBox(T initial) : value(std::move(initial)) {}

  T value;
};

}  // namespace zt
