// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

/// The unique null object. As a property value it says that the property explicitly has no value:
/// it stops the cascade. Found by pointer: `value == NSNull::null()`.
class ZT_EXPORT NSNull final : public NSObject {
 public:
  /// The one instance, never destroyed.
  static NSNull* null() noexcept { return sNull; }

  static const ZTClass& nullClass();
  const ZTClass& classObject() const override;
  std::size_t hash() const override { return 1; }
  std::size_t stableHash() const override { return 1; }
  std::string description() const override { return "<null>"; }
  Ref<NSObject> copy() const override { return Ref<NSObject>(null()); }

 private:
  NSNull() noexcept : NSObject(Tag::null) {}
  ~NSNull() override = default;

  static NSNull* const sNull;
};

/// Whether the value is the null sentinel.
inline bool isNull(const NSObject* value) noexcept { return value == NSNull::null(); }

}  // namespace zt
