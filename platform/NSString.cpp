// SPDX-License-Identifier: MIT
#include <platform/NSString.h>
#include <platform/ZTClass.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace zt {

const ZTClass& NSString::stringClass() {
  static const ZTClass* object = new ZTClass("NSString", &nsObjectClass(), &typeid(NSString));
  return *object;
}

const ZTClass& NSString::classObject() const { return stringClass(); }

std::size_t NSString::hashOf(std::string_view text) noexcept {
  // Seldom zero by chance, and never for the empty text: zero is the hash of an absent string.
  return std::hash<std::string_view>{}(text) | 1u;
}

Ref<NSString> NSString::make(std::string_view text) {
  constexpr std::size_t head = sizeof(NSString) - sizeof(NSString::mText);
  void* memory = ::operator new(head + std::max(text.size() + 1, sizeof(NSString::mText)));
  auto* string = ::new (memory) NSString(text.size(), hashOf(text));
  char* characters = string->mText;  // the block goes on behind the array
  if (!text.empty()) std::memcpy(characters, text.data(), text.size());
  characters[text.size()] = '\0';
  return Ref<NSString>(string);
}

void NSString::operator delete(void* memory) noexcept { ::operator delete(memory); }

bool NSString::isEqual(const NSObject* other) const {
  if (this == other) return true;
  const NSString* string = from(other);
  return string != nullptr && string->mHash == mHash && string->view() == view();
}

Ref<NSObject> NSString::copy() const { return Ref<NSObject>(const_cast<NSString*>(this)); }

}  // namespace zt
