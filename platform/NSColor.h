// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <cstdint>

namespace zt {

/// An immutable colour: red, green, blue and opacity, each 0 to 255.
class ZT_EXPORT NSColor final : public NSObject {
 public:
  static Ref<NSColor> withComponents(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                     std::uint8_t opacity = 255);

  [[nodiscard]] std::uint8_t red() const noexcept { return static_cast<std::uint8_t>(mComponents >> 24); }
  [[nodiscard]] std::uint8_t green() const noexcept { return static_cast<std::uint8_t>(mComponents >> 16); }
  [[nodiscard]] std::uint8_t blue() const noexcept { return static_cast<std::uint8_t>(mComponents >> 8); }
  [[nodiscard]] std::uint8_t opacity() const noexcept { return static_cast<std::uint8_t>(mComponents); }

  static const ZTClass& colorClass();
  const ZTClass& classObject() const override;
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override { return hash(); }
  /// `#rrggbb`, or `#rrggbbaa` where it is not opaque.
  std::string description() const override;
  Ref<NSObject> copy() const override;

  /// The object as a colour, or none.
  static const NSColor* from(const NSObject* object) noexcept {
    return object != nullptr && tagOf(*object) == Tag::colour ? static_cast<const NSColor*>(object) : nullptr;
  }

 private:
  explicit NSColor(std::uint32_t components) noexcept : NSObject(Tag::colour), mComponents(components) {}
  ~NSColor() override = default;

  std::uint32_t mComponents;
};

}  // namespace zt
