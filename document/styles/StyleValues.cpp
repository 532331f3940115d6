// SPDX-License-Identifier: MIT
#include <document/styles/StyleValues.h>

#include <document/values/Colour.h>
#include <document/values/Scalar.h>

#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <ztstyles/ZTSStyle.h>

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <optional>

namespace zt {

namespace {

/// Class objects are immortal. These values are made from text, never by their class.
const ZTClass& makeClass(const char* name, const std::type_info& type) {
  return *new ZTClass(name, &NSObject::nsObjectClass(), &type);
}

// The classes are final, so that the type itself is the whole question.
template <class T>
const T* exactly(const NSObject* value) noexcept {
  return value != nullptr && typeid(*value) == typeid(T) ? static_cast<const T*>(value) : nullptr;
}

// A row's functions may cast: they get values that `isOf` accepted.
template <class T>
bool is(const NSObject& value) {
  return T::from(&value) != nullptr;
}

template <class T>
bool isExactly(const NSObject& value) {
  return typeid(value) == typeid(T);
}

const NSNumber& number(const NSObject& value) { return *NSNumber::from(&value); }

template <class T>
Ref<NSObject> wrapped(const std::optional<T>& value, auto wrap) {
  return value ? Ref<NSObject>(wrap(*value)) : Ref<NSObject>();
}

constexpr std::array kKinds = {
    ValueKind{kBoolean, "boolean", nullptr,
              [](const NSObject& value) { return is<NSNumber>(value) && number(value).isBool(); },
              [](std::string_view text) { return wrapped(parseBoolean(text), &NSNumber::withBool); },
              [](const NSObject& value) { return std::string(number(value).boolValue() ? "true" : "false"); }},
    ValueKind{kInteger, "number", nullptr,
              [](const NSObject& value) {
                return is<NSNumber>(value) && !number(value).isBool() && number(value).isInteger();
              },
              [](std::string_view text) {
                return wrapped(parseInteger(text), [](std::int64_t value) { return NSNumber::withInteger(value); });
              },
              [](const NSObject& value) { return std::to_string(number(value).integerValue()); }},
    ValueKind{kLength, "length", &LengthValue::valueClass, &isExactly<LengthValue>,
              [](std::string_view text) { return wrapped(parseLength(text), &make<LengthValue, const Length&>); },
              [](const NSObject& value) { return lengthText(asLength(&value)->length()); }},
    ValueKind{
        kPercentage, "percentage", &PercentageValue::valueClass, &isExactly<PercentageValue>,
        [](std::string_view text) { return wrapped(parsePercentage(text), &make<PercentageValue, const Percentage&>); },
        [](const NSObject& value) { return percentageText(asPercentage(&value)->percentage()); }},
    ValueKind{kNumber, "number", nullptr,
              [](const NSObject& value) { return is<NSNumber>(value) && !number(value).isBool(); },
              [](std::string_view text) {
                return wrapped(parseNumber(text), [](double value) { return NSNumber::withReal(value); });
              },
              [](const NSObject& value) { return numberText(number(value).realValue()); }},
    ValueKind{kColour, "colour", nullptr, &is<NSColor>,
              [](std::string_view text) {
                return wrapped(parseColour(text), [](const Colour& value) {
                  return NSColor::withComponents(value.red, value.green, value.blue, value.isTransparent ? 0 : 255);
                });
              },
              [](const NSObject& value) {
                const NSColor& colour = *NSColor::from(&value);
                return colourText({colour.red(), colour.green(), colour.blue(), colour.opacity() == 0});
              }},
    ValueKind{kElement, "opaque", &OpaqueValue::valueClass, &isExactly<OpaqueValue>,
              [](std::string_view text) { return Ref<NSObject>(make<OpaqueValue>(std::string(text))); },
              [](const NSObject& value) { return asOpaque(&value)->text(); }},
    ValueKind{kText, "text", nullptr, &is<NSString>,
              [](std::string_view text) { return Ref<NSObject>(NSString::make(text)); },
              [](const NSObject& value) { return std::string(NSString::from(&value)->view()); }},
    ValueKind{kStyle, "style", nullptr, [](const NSObject& value) { return asStyle(&value) != nullptr; },
              [](std::string_view) { return Ref<NSObject>(); },  // which style is meant, the document knows
              [](const NSObject& value) {
                const ZTSStyle& style = *asStyle(&value);
                return style.isIdentified() ? style.identifier().text() : "(anonymous style)";
              }}};

// Every letter has its row, and every row its letter.
static_assert(std::accumulate(kKinds.begin(), kKinds.end(), 0U,
                              [](unsigned bits, const ValueKind& kind) { return bits | kind.bit; }) ==
                  (1U << kKindLetters.size()) - 1 &&
              kKinds.size() == kKindLetters.size());

const ValueKind* kindOf(const NSObject& value) {
  const auto found =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const ValueKind& kind) { return kind.isOf(value); });
  return found == kKinds.end() ? nullptr : &*found;
}

}  // namespace

std::span<const ValueKind> valueKinds() { return kKinds; }

const ZTClass& LengthValue::valueClass() {
  static const ZTClass& object = makeClass("LengthValue", typeid(LengthValue));
  return object;
}

bool LengthValue::isEqual(const NSObject* other) const {
  const LengthValue* length = asLength(other);
  return length != nullptr && length->mLength == mLength;
}

std::size_t LengthValue::hash() const { return std::hash<std::int64_t>()(mLength.units) * 31 + 1; }

const ZTClass& PercentageValue::valueClass() {
  static const ZTClass& object = makeClass("PercentageValue", typeid(PercentageValue));
  return object;
}

bool PercentageValue::isEqual(const NSObject* other) const {
  const PercentageValue* percentage = asPercentage(other);
  return percentage != nullptr && percentage->mPercentage == mPercentage;
}

std::size_t PercentageValue::hash() const { return std::hash<std::int64_t>()(mPercentage.units) * 31 + 2; }

OpaqueValue::OpaqueValue(std::string text) : mText(std::move(text)), mHash(NSString::hashOf(mText) * 31 + 3) {}

const ZTClass& OpaqueValue::valueClass() {
  static const ZTClass& object = makeClass("OpaqueValue", typeid(OpaqueValue));
  return object;
}

bool OpaqueValue::isEqual(const NSObject* other) const {
  const OpaqueValue* opaque = asOpaque(other);
  return opaque != nullptr && opaque->mHash == mHash && opaque->mText == mText;
}

const LengthValue* asLength(const NSObject* value) noexcept { return exactly<LengthValue>(value); }
const PercentageValue* asPercentage(const NSObject* value) noexcept { return exactly<PercentageValue>(value); }
const OpaqueValue* asOpaque(const NSObject* value) noexcept { return exactly<OpaqueValue>(value); }

std::string_view valueKind(const NSObject* value) {
  if (value == nullptr || isNull(value)) return "none";
  const ValueKind* kind = kindOf(*value);
  return kind != nullptr ? kind->name : "opaque";
}

std::string valueText(const NSObject* value, bool prefersPoints) {
  if (value == nullptr || isNull(value)) return {};
  if (const LengthValue* length = asLength(value)) return lengthText(length->length(), prefersPoints);
  const ValueKind* kind = kindOf(*value);
  return kind != nullptr ? kind->text(*value) : value->description();
}

}  // namespace zt
