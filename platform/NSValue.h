// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

/// An opaque pointer as an object. It does not own what it points to; equal by address.
class ZT_EXPORT NSValue final : public NSObject {
 public:
  static Ref<NSValue> withPointer(void* pointer);

  [[nodiscard]] void* pointerValue() const noexcept { return mPointer; }

  static const ZTClass& valueClass();
  const ZTClass& classObject() const override;
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override { return hash(); }
  std::string description() const override;
  Ref<NSObject> copy() const override;

  /// The object as a pointer value, or none.
  static const NSValue* from(const NSObject* object) noexcept;

 private:
  explicit NSValue(void* pointer) noexcept : NSObject(Tag::otherValue), mPointer(pointer) {}
  ~NSValue() override = default;

  void* mPointer;
};

}  // namespace zt
