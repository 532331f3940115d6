// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <vector>

namespace zt {

/// An immutable list of objects; no element is none (the null sentinel marks a gap). Equal when the
/// elements are equal one by one. A list that holds styles is no plain value in the sense of
/// `isPlainValue` alone: ask its elements.
class ZT_EXPORT NSArray final : public NSObject {
 public:
  /// None among the elements is replaced by the null sentinel.
  static Ref<NSArray> withObjects(std::vector<Ref<NSObject>> objects);

  [[nodiscard]] const std::vector<Ref<NSObject>>& objects() const noexcept { return mObjects; }
  [[nodiscard]] std::size_t count() const noexcept { return mObjects.size(); }
  /// The element, which must exist.
  [[nodiscard]] NSObject* objectAtIndex(std::size_t index) const { return mObjects.at(index).get(); }

  static const ZTClass& arrayClass();
  const ZTClass& classObject() const override;
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override;
  /// `(a, b, c)`.
  std::string description() const override;
  Ref<NSObject> copy() const override;

  /// The object as a list, or none.
  static const NSArray* from(const NSObject* object) noexcept {
    return object != nullptr && tagOf(*object) == Tag::array ? static_cast<const NSArray*>(object) : nullptr;
  }

 private:
  explicit NSArray(std::vector<Ref<NSObject>> objects) noexcept : NSObject(Tag::array), mObjects(std::move(objects)) {}
  ~NSArray() override = default;

  std::vector<Ref<NSObject>> mObjects;
};

}  // namespace zt
