// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The application's own kinds of property values. All are immutable and compare by what they say.
/// Beside them stand the platform's: strings, booleans, numbers, colours, the null sentinel, styles.

#include <document/values/Length.h>
#include <document/values/Percentage.h>

#include <platform/NSObject.h>
#include <platform/ZTClass.h>

#include <string>
#include <string_view>

namespace zt {

/// An exact length.
class LengthValue final : public NSObject {
 public:
  explicit LengthValue(Length length) noexcept : mLength(length) {}

  [[nodiscard]] Length length() const noexcept { return mLength; }

  static const ZTClass& valueClass();
  const ZTClass& classObject() const override { return valueClass(); }
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override { return hash(); }
  std::string description() const override { return lengthText(mLength); }
  Ref<NSObject> copy() const override { return Ref<NSObject>(const_cast<LengthValue*>(this)); }

 private:
  Length mLength;
};

/// A percentage. What it is a share of is the property's affair.
class PercentageValue final : public NSObject {
 public:
  explicit PercentageValue(Percentage percentage) noexcept : mPercentage(percentage) {}

  [[nodiscard]] Percentage percentage() const noexcept { return mPercentage; }

  static const ZTClass& valueClass();
  const ZTClass& classObject() const override { return valueClass(); }
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;
  std::size_t stableHash() const override { return hash(); }
  std::string description() const override { return percentageText(mPercentage); }
  Ref<NSObject> copy() const override { return Ref<NSObject>(const_cast<PercentageValue*>(this)); }

 private:
  Percentage mPercentage;
};

/// Text that this application does not understand and keeps as it is: an attribute it does not
/// know, or an element with all it holds.
class OpaqueValue final : public NSObject {
 public:
  explicit OpaqueValue(std::string text);

  [[nodiscard]] const std::string& text() const noexcept { return mText; }

  static const ZTClass& valueClass();
  const ZTClass& classObject() const override { return valueClass(); }
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override { return mHash; }
  std::size_t stableHash() const override { return mHash; }
  std::string description() const override { return mText; }
  Ref<NSObject> copy() const override { return Ref<NSObject>(const_cast<OpaqueValue*>(this)); }

 private:
  std::string mText;
  std::size_t mHash;
};

/// The value as that kind, or none.
const LengthValue* asLength(const NSObject* value) noexcept;
const PercentageValue* asPercentage(const NSObject* value) noexcept;
const OpaqueValue* asOpaque(const NSObject* value) noexcept;

/// The word for the kind of a value: "length", "percentage", "colour", "boolean", "number", "text",
/// "opaque", "style", "none" for the null sentinel and for no value.
std::string_view valueKind(const NSObject* value);

/// The value as OpenDocument writes it; lengths in points where `prefersPoints`. A style is named by
/// its identifier. Empty for the null sentinel and for no value.
std::string valueText(const NSObject* value, bool prefersPoints = false);

}  // namespace zt
