// SPDX-License-Identifier: MIT
#include <platform/NSDictionary.h>
#include <platform/NSException.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>
#include <platform/ZTNesting.h>

#include <memory>
#include <new>
#include <utility>

namespace zt {

namespace {

void requireEntry(const StringRef& key, const Ref<NSObject>& value) {
  if (!key.isPresent()) throw NSInvalidArgumentException("NSDictionary: an entry without a key");
  if (value == nullptr) throw NSInvalidArgumentException(format("NSDictionary: no value for the key %@", key));
}

}  // namespace

static_assert(sizeof(NSDictionary) % alignof(NSDictionary::Entry) == 0);

NSDictionary::~NSDictionary() { std::destroy_n(room(), mEntryCount); }

void NSDictionary::operator delete(void* memory) noexcept { ::operator delete(memory); }

Ref<NSDictionary> NSDictionary::withRoomFor(std::size_t count) {
  void* memory = ::operator new(sizeof(NSDictionary) + count * sizeof(Entry));
  return Ref<NSDictionary>(::new (memory) NSDictionary);
}

Ref<NSDictionary> NSDictionary::make(std::initializer_list<Entry> entries) {
  Ref<NSDictionary> result = withRoomFor(entries.size());
  for (const Entry& entry : entries) result->add(entry.key, entry.value);
  return result;
}

Ref<NSDictionary> NSDictionary::make(StringRef key, Ref<NSObject> value) {
  requireEntry(key, value);
  Ref<NSDictionary> result = withRoomFor(1);
  ::new (static_cast<void*>(result->room())) Entry{std::move(key), std::move(value)};
  result->mEntryCount = 1;
  return result;
}

void NSDictionary::add(StringRef key, Ref<NSObject> value) {
  requireEntry(key, value);
  for (Entry& entry : std::span(room(), mEntryCount)) {
    if (entry.key == key) {
      entry.value = std::move(value);
      return;
    }
  }
  ::new (static_cast<void*>(room() + mEntryCount)) Entry{std::move(key), std::move(value)};
  ++mEntryCount;
}

NSObject* NSDictionary::objectForKey(std::string_view key) const noexcept {
  for (const Entry& entry : entries()) {
    if (entry.key.view() == key) return entry.value.get();
  }
  return nullptr;
}

const ZTClass& NSDictionary::dictionaryClass() {
  static const ZTClass* object = new ZTClass("NSDictionary", &nsObjectClass(), &typeid(NSDictionary));
  return *object;
}

const ZTClass& NSDictionary::classObject() const { return dictionaryClass(); }

bool NSDictionary::isEqual(const NSObject* other) const {
  if (this == other) return true;
  const auto* dictionary = dynamic_cast<const NSDictionary*>(other);
  if (dictionary == nullptr || dictionary->count() != count()) return false;
  const NestingGuard nesting("isEqual:", Nesting::equality);
  for (const Entry& entry : entries()) {
    const NSObject* theirs = dictionary->objectForKey(entry.key.view());
    if (theirs == nullptr || !sameOrEqual(entry.value.get(), theirs)) return false;
  }
  return true;
}

std::size_t NSDictionary::hash() const {
  const NestingGuard nesting("hash", Nesting::equality);
  std::size_t result = mEntryCount;
  for (const Entry& entry : entries()) {
    // A sum, since order plays no part; a product, so that swapped values do not cancel out.
    result += (entry.key.hash() ^ 0x9e3779b97f4a7c15ull) * (entry.value->hash() | 1u);
  }
  return result;
}

std::string NSDictionary::description() const {
  const NestingGuard nesting("description", Nesting::description);
  std::string result = "{";
  for (const Entry& entry : entries()) {
    if (result.size() > 1) result += "; ";
    result += format("%@ = %@", entry.key, entry.value);
  }
  return result + "}";
}

Ref<NSObject> NSDictionary::copy() const { return Ref<NSObject>(const_cast<NSDictionary*>(this)); }

}  // namespace zt
