// The immutable values: null, numbers, colours, lists, pointers.

#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSValue.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>
#include <platform/ZTHash.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace zt {

namespace {

template <class T>
Ref<NSObject> itself(const T* value) {
  return Ref<NSObject>(const_cast<T*>(value));
}

// 2^63 as a real: the first one that no integer reaches.
constexpr double kBeyondIntegers = 9223372036854775808.0;

/// Whether the real has an integer that equals it.
bool isWhole(double value) {
  return value >= -kBeyondIntegers && value < kBeyondIntegers && value == std::trunc(value);
}

}  // namespace

// ---- NSNull

NSNull* const NSNull::sNull = [] {
  auto* null = new NSNull;
  intrusive_ptr_add_ref(null);  // immortal
  return null;
}();

const ZTClass& NSNull::nullClass() {
  static const ZTClass* object = new ZTClass("NSNull", &nsObjectClass(), &typeid(NSNull));
  return *object;
}
const ZTClass& NSNull::classObject() const { return nullClass(); }

// ---- NSNumber

Ref<NSNumber> NSNumber::withBool(bool value) {
  static const Ref<NSNumber> yes(new NSNumber(Tag::boolean, 1));
  static const Ref<NSNumber> no(new NSNumber(Tag::boolean, 0));
  return value ? yes : no;
}
Ref<NSNumber> NSNumber::withInteger(std::int64_t value) { return Ref<NSNumber>(new NSNumber(Tag::integer, value)); }
Ref<NSNumber> NSNumber::withReal(double value) { return Ref<NSNumber>(new NSNumber(value)); }

std::int64_t NSNumber::integerValue() const noexcept {
  if (!isReal()) return mInteger;
  if (std::isnan(mReal)) return 0;
  if (mReal >= kBeyondIntegers) return std::numeric_limits<std::int64_t>::max();
  if (mReal < -kBeyondIntegers) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(mReal);
}

const ZTClass& NSNumber::numberClass() {
  static const ZTClass* object = new ZTClass("NSNumber", &nsObjectClass(), &typeid(NSNumber));
  return *object;
}
const ZTClass& NSNumber::classObject() const { return numberClass(); }

bool NSNumber::isEqual(const NSObject* other) const {
  if (this == other) return true;
  const NSNumber* number = from(other);
  if (number == nullptr || isBool() != number->isBool()) return false;
  if (isReal() && number->isReal()) {
    return mReal == number->mReal || (std::isnan(mReal) && std::isnan(number->mReal));
  }
  if (isReal() || number->isReal()) {
    const double real = isReal() ? mReal : number->mReal;
    const std::int64_t integer = isReal() ? number->mInteger : mInteger;
    return isWhole(real) && static_cast<std::int64_t>(real) == integer;
  }
  return mInteger == number->mInteger;
}

std::size_t NSNumber::hash() const {
  if (isBool()) return mixBits(static_cast<std::uint64_t>(mInteger) + 0xb001ull);
  if (!isReal()) return mixBits(static_cast<std::uint64_t>(mInteger));
  if (isWhole(mReal)) return mixBits(static_cast<std::uint64_t>(static_cast<std::int64_t>(mReal)));
  if (std::isnan(mReal)) return mixBits(0x7ff8ull << 48);
  return mixBits(std::bit_cast<std::uint64_t>(mReal));
}

std::string NSNumber::description() const {
  if (isBool()) return mInteger != 0 ? "YES" : "NO";
  char text[32];
  const auto end =
      isReal() ? std::to_chars(text, text + sizeof text, mReal) : std::to_chars(text, text + sizeof text, mInteger);
  return {text, end.ptr};
}

Ref<NSObject> NSNumber::copy() const { return itself(this); }

// ---- NSColor

Ref<NSColor> NSColor::withComponents(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t opacity) {
  return Ref<NSColor>(
      new NSColor(std::uint32_t{red} << 24 | std::uint32_t{green} << 16 | std::uint32_t{blue} << 8 | opacity));
}

const ZTClass& NSColor::colorClass() {
  static const ZTClass* object = new ZTClass("NSColor", &nsObjectClass(), &typeid(NSColor));
  return *object;
}
const ZTClass& NSColor::classObject() const { return colorClass(); }

bool NSColor::isEqual(const NSObject* other) const {
  const NSColor* color = from(other);
  return color != nullptr && color->mComponents == mComponents;
}

std::size_t NSColor::hash() const { return mixBits(mComponents + 0xc010ull); }

std::string NSColor::description() const {
  static const char digits[] = "0123456789abcdef";
  std::string text = "#";
  for (int shift = 28; shift >= (opacity() == 255 ? 8 : 0); shift -= 4) text += digits[(mComponents >> shift) & 15];
  return text;
}

Ref<NSObject> NSColor::copy() const { return itself(this); }

// ---- NSArray

Ref<NSArray> NSArray::withObjects(std::vector<Ref<NSObject>> objects) {
  for (Ref<NSObject>& each : objects) {
    if (!each) each = NSNull::null();
  }
  return Ref<NSArray>(new NSArray(std::move(objects)));
}

const ZTClass& NSArray::arrayClass() {
  static const ZTClass* object = new ZTClass("NSArray", &nsObjectClass(), &typeid(NSArray));
  return *object;
}
const ZTClass& NSArray::classObject() const { return arrayClass(); }

bool NSArray::isEqual(const NSObject* other) const {
  if (this == other) return true;
  const NSArray* array = from(other);
  if (array == nullptr || array->count() != count()) return false;
  for (std::size_t index = 0; index < mObjects.size(); ++index) {
    if (!sameOrEqual(mObjects[index].get(), array->mObjects[index].get())) return false;
  }
  return true;
}

std::size_t NSArray::hash() const {
  std::size_t all = mObjects.size() + 0xa77a;
  for (const Ref<NSObject>& each : mObjects) all = combineHashes(all, each->hash());
  return all;
}

std::size_t NSArray::stableHash() const {
  std::size_t all = mObjects.size() + 0xa77a;
  for (const Ref<NSObject>& each : mObjects) all = combineHashes(all, each->stableHash());
  return all;
}

std::string NSArray::description() const {
  std::string text = "(";
  for (const Ref<NSObject>& each : mObjects) {
    if (text.size() > 1) text += ", ";
    text += each->description();
  }
  return text + ")";
}

Ref<NSObject> NSArray::copy() const { return itself(this); }

// ---- NSValue

Ref<NSValue> NSValue::withPointer(void* pointer) { return Ref<NSValue>(new NSValue(pointer)); }

const ZTClass& NSValue::valueClass() {
  static const ZTClass* object = new ZTClass("NSValue", &nsObjectClass(), &typeid(NSValue));
  return *object;
}
const ZTClass& NSValue::classObject() const { return valueClass(); }

const NSValue* NSValue::from(const NSObject* object) noexcept { return dynamic_cast<const NSValue*>(object); }

bool NSValue::isEqual(const NSObject* other) const {
  const NSValue* value = from(other);
  return value != nullptr && value->mPointer == mPointer;
}

std::size_t NSValue::hash() const { return mixBits(reinterpret_cast<std::uintptr_t>(mPointer)); }

std::string NSValue::description() const { return format("%p", address(mPointer)); }

Ref<NSObject> NSValue::copy() const { return itself(this); }

}  // namespace zt
