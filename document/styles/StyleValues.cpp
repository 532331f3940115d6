// SPDX-License-Identifier: MIT
#include <document/styles/StyleValues.h>

#include <document/values/Colour.h>
#include <document/values/Scalar.h>

#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <ztstyles/ZTSStyle.h>

#include <functional>

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

}  // namespace

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
  if (asLength(value) != nullptr) return "length";
  if (asPercentage(value) != nullptr) return "percentage";
  if (NSColor::from(value) != nullptr) return "colour";
  if (const NSNumber* number = NSNumber::from(value)) return number->isBool() ? "boolean" : "number";
  if (NSString::from(value) != nullptr) return "text";
  return asStyle(value) != nullptr ? "style" : "opaque";
}

std::string valueText(const NSObject* value, bool prefersPoints) {
  if (value == nullptr || isNull(value)) return {};
  if (const LengthValue* length = asLength(value)) return lengthText(length->length(), prefersPoints);
  if (const NSColor* colour = NSColor::from(value)) {
    return colourText({colour->red(), colour->green(), colour->blue(), colour->opacity() == 0});
  }
  if (const NSNumber* number = NSNumber::from(value)) {
    if (number->isBool()) return number->boolValue() ? "true" : "false";
    return number->isInteger() ? std::to_string(number->integerValue()) : numberText(number->realValue());
  }
  if (const ZTSStyle* style = asStyle(value))
    return style->isIdentified() ? style->identifier().text() : "(anonymous style)";
  return value->description();
}

}  // namespace zt
