// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The kinds of property values: the table that says all about each, and the application's own classes. All values are
/// immutable and compare by what they say. A new kind is a bit with its letter and a class here, and a row in
/// StyleValues.cpp; archives and property rules take it from there.

#include <document/values/Length.h>
#include <document/values/Percentage.h>

#include <platform/NSObject.h>
#include <platform/ZTClass.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zt {

/// The kinds of values that a property takes, as bits.
enum ValueKinds : std::uint16_t {
  kLength = 1,
  kPercentage = 2,
  kColour = 4,
  kBoolean = 8,
  kInteger = 16,
  kNumber = 32,
  kText = 64,      ///< any text
  kElement = 128,  ///< an element, kept as opaque text
  kStyle = 256,    ///< a reference to a style
};

/// The letters by which the tables of properties name the kinds, from the lowest bit on.
inline constexpr std::string_view kKindLetters = "LPCBINTXS";

/// What there is to know about one kind.
struct ValueKind {
  ValueKinds bit;
  std::string_view name;                         ///< for people, and for the elements of archives: "length"
  const ZTClass& (*valueClass)();                ///< of values that archives need to be told about; none for others
  bool (*isOf)(const NSObject& value);           ///< whether the value is of this kind
  Ref<NSObject> (*read)(std::string_view text);  ///< none where the text says no such value
  std::string (*text)(const NSObject& value);    ///< of a value of this kind, as OpenDocument writes it
};

/// All kinds, in the order in which a text is tried: the narrowest first.
std::span<const ValueKind> valueKinds();

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

/// The name of the kind of a value: "length", "percentage", "colour", "boolean", "number", "text",
/// "opaque", "style", "none" for the null sentinel and for no value.
std::string_view valueKind(const NSObject* value);

/// The value as OpenDocument writes it; lengths in points where `prefersPoints`. A style is named by
/// its identifier. Empty for the null sentinel and for no value.
std::string valueText(const NSObject* value, bool prefersPoints = false);

}  // namespace zt
