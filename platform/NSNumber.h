// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <cstdint>

namespace zt {

/// An immutable boolean, integer or real. Integers and reals that are equal as numbers are equal;
/// booleans equal only booleans; NaN equals itself, and -0 equals 0. Equal numbers hash alike.
class ZT_EXPORT NSNumber final : public NSObject {
 public:
  static Ref<NSNumber> withBool(bool value);
  static Ref<NSNumber> withInteger(std::int64_t value);
  static Ref<NSNumber> withReal(double value);

  [[nodiscard]] bool isBool() const noexcept { return tag() == Tag::boolean; }
  [[nodiscard]] bool isInteger() const noexcept { return tag() == Tag::integer; }
  [[nodiscard]] bool isReal() const noexcept { return tag() == Tag::real; }

  /// Whether the number is not zero.
  [[nodiscard]] bool boolValue() const noexcept { return isReal() ? mReal != 0 : mInteger != 0; }
  /// The integer; a real is cut towards zero and held to the range of the type (NaN gives 0).
  [[nodiscard]] std::int64_t integerValue() const noexcept;
  /// The number as a real; integers above 2^53 are rounded.
  [[nodiscard]] double realValue() const noexcept { return isReal() ? mReal : static_cast<double>(mInteger); }

  static const ZTClass& numberClass();
  const ZTClass& classObject() const override;
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override { return hash(); }
  /// `YES` or `NO`, the integer, or the shortest text that reads back as the same real.
  std::string description() const override;
  Ref<NSObject> copy() const override;

  /// The object as a number, or none.
  static const NSNumber* from(const NSObject* object) noexcept {
    if (object == nullptr) return nullptr;
    const Tag tag = tagOf(*object);
    return tag == Tag::boolean || tag == Tag::integer || tag == Tag::real ? static_cast<const NSNumber*>(object)
                                                                          : nullptr;
  }

 private:
  NSNumber(Tag tag, std::int64_t value) noexcept : NSObject(tag), mInteger(value) {}
  explicit NSNumber(double value) noexcept : NSObject(Tag::real), mReal(value) {}
  ~NSNumber() override = default;

  union {
    std::int64_t mInteger;
    double mReal;
  };
};

}  // namespace zt
