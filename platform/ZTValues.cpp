// SPDX-License-Identifier: MIT

// The immutable values: null, numbers, colours, lists, pointers.

#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSValue.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>
#include <platform/ZTHash.h>

#include <boost/container/small_vector.hpp>

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

// Lists may nest as deep as a file or a program likes. What follows walks them with a stack of its own; only elements
// that are no lists are called.

bool NSArray::isEqual(const NSObject* other) const {
  struct Level {
    const NSArray* left;
    const NSArray* right;
    std::size_t next = 0;
  };
  boost::container::small_vector<Level, 8> open;
  // Whether the two may still be equal; lists whose elements have yet to be compared are opened.
  const auto compare = [&open](const NSArray* left, const NSArray* right) {
    if (right == nullptr || left->count() != right->count()) return false;
    if (left != right) open.push_back({left, right});
    return true;
  };
  if (!compare(this, from(other))) return false;
  while (!open.empty()) {
    Level& level = open.back();
    if (level.next == level.left->count()) {
      open.pop_back();
      continue;
    }
    const NSObject* left = level.left->mObjects[level.next].get();
    const NSObject* right = level.right->mObjects[level.next++].get();
    const NSArray* list = from(left);
    if (list != nullptr ? !compare(list, from(right)) : !sameOrEqual(left, right)) return false;
  }
  return true;
}

namespace {

template <class HashOf>
std::size_t hashOfList(const NSArray& list, HashOf hashOf) {
  struct Level {
    const NSArray* list;
    std::size_t all;
    std::size_t next = 0;
  };
  const auto opened = [](const NSArray* each) { return Level{each, each->count() + 0xa77a}; };
  boost::container::small_vector<Level, 8> open{opened(&list)};
  while (true) {
    Level& level = open.back();
    if (level.next == level.list->count()) {
      const std::size_t all = level.all;
      open.pop_back();
      if (open.empty()) return all;
      open.back().all = combineHashes(open.back().all, all);
      continue;
    }
    const NSObject* each = level.list->objects()[level.next++].get();
    if (const NSArray* inner = NSArray::from(each)) {
      open.push_back(opened(inner));
    } else {
      level.all = combineHashes(level.all, hashOf(*each));
    }
  }
}

}  // namespace

std::size_t NSArray::hash() const {
  return hashOfList(*this, [](const NSObject& each) { return each.hash(); });
}

std::size_t NSArray::stableHash() const {
  return hashOfList(*this, [](const NSObject& each) { return each.stableHash(); });
}

std::string NSArray::description() const {
  struct Level {
    const NSArray* list;
    std::size_t next = 0;
  };
  boost::container::small_vector<Level, 8> open{Level{this}};
  std::string text = "(";
  while (!open.empty()) {
    Level& level = open.back();
    if (level.next == level.list->count()) {
      open.pop_back();
      text += ')';
      continue;
    }
    if (level.next != 0) text += ", ";
    const NSObject* each = level.list->mObjects[level.next++].get();
    if (const NSArray* inner = from(each)) {
      text += '(';
      open.push_back({inner});
    } else {
      text += each->description();
    }
  }
  return text;
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
