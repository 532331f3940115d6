// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/PropertyMap.h>
#include <platform/ZTFormat.h>
#include <platform/ZTHash.h>

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace zt {

namespace {

constexpr std::uint32_t kNoIndex = std::numeric_limits<std::uint32_t>::max();

std::uint32_t slotHash(PropertyKey key) noexcept { return key.ordinal() * 0x9e3779b1u >> 7; }

}  // namespace

PropertyMap::PropertyMap(std::uint32_t capacity) noexcept : mCapacity(capacity), mEntries(ownRoom()) {
  if (hasTable()) std::memset(static_cast<void*>(table()), 0, tableSizeFor(capacity) * sizeof(std::uint32_t));
}

PropertyMap::~PropertyMap() {
  std::destroy_n(mEntries, mCount);
  if (mEntries != ownRoom()) ::operator delete(mEntries);
}

void PropertyMap::operator delete(void* memory) noexcept { ::operator delete(memory); }

std::uint32_t PropertyMap::tableSizeFor(std::uint32_t capacity) noexcept {
  return capacity > kWalked ? std::bit_ceil(capacity + capacity / 2) : 0;
}

std::size_t PropertyMap::bytesFor(std::size_t capacity) noexcept {
  return capacity * sizeof(Entry) + tableSizeFor(static_cast<std::uint32_t>(capacity)) * sizeof(std::uint32_t);
}

Ref<PropertyMap> PropertyMap::make(std::size_t capacity) {
  if (capacity > kNoIndex / 4) throw std::length_error("property map");
  void* memory = ::operator new(sizeof(PropertyMap) + bytesFor(capacity));
  return Ref<PropertyMap>(::new (memory) PropertyMap(static_cast<std::uint32_t>(capacity)));
}

Ref<PropertyMap> PropertyMap::with(std::initializer_list<Entry> entries) {
  Ref<PropertyMap> map = make(entries.size());
  for (const Entry& entry : entries) map->set(entry.key, entry.value);
  return map;
}

Ref<PropertyMap> PropertyMap::copy(std::size_t more) const {
  Ref<PropertyMap> map = make(mCount + more);
  std::uninitialized_copy_n(mEntries, mCount, map->mEntries);
  map->mCount = mCount;
  if (!map->hasTable()) return map;
  if (map->mCapacity == mCapacity) {
    std::memcpy(map->table(), table(), tableSizeFor(mCapacity) * sizeof(std::uint32_t));
  } else {
    map->rebuildTable();
  }
  return map;
}

NSObject* PropertyMap::findInTable(PropertyKey key) const noexcept {
  const std::uint32_t index = indexOf(key);
  return index == kNoIndex ? nullptr : mEntries[index].value.get();
}

std::uint32_t PropertyMap::indexOf(PropertyKey key) const noexcept {
  if (!hasTable()) {
    for (std::uint32_t index = 0; index < mCount; ++index) {
      if (mEntries[index].key == key) return index;
    }
    return kNoIndex;
  }
  if (!key) return kNoIndex;
  const std::uint32_t* slots = table();
  const std::uint32_t mask = tableSizeFor(mCapacity) - 1;
  for (std::uint32_t slot = slotHash(key) & mask; slots[slot] != 0; slot = (slot + 1) & mask) {
    if (mEntries[slots[slot] - 1].key == key) return slots[slot] - 1;
  }
  return kNoIndex;
}

void PropertyMap::enterInTable(PropertyKey key, std::uint32_t index) noexcept {
  if (!hasTable()) return;
  std::uint32_t* slots = table();
  const std::uint32_t mask = tableSizeFor(mCapacity) - 1;
  std::uint32_t slot = slotHash(key) & mask;
  while (slots[slot] != 0) slot = (slot + 1) & mask;
  slots[slot] = index + 1;
}

void PropertyMap::rebuildTable() noexcept {
  if (!hasTable()) return;
  std::memset(static_cast<void*>(table()), 0, tableSizeFor(mCapacity) * sizeof(std::uint32_t));
  for (std::uint32_t index = 0; index < mCount; ++index) enterInTable(mEntries[index].key, index);
}

void PropertyMap::grow(std::size_t capacity) {
  if (capacity > kNoIndex / 4) throw std::length_error("property map");
  auto* entries = static_cast<Entry*>(::operator new(bytesFor(capacity)));
  // Moving an entry is copying its bits: nothing refers back into it.
  std::memcpy(static_cast<void*>(entries), static_cast<const void*>(mEntries), mCount * sizeof(Entry));
  if (mEntries != ownRoom()) ::operator delete(mEntries);
  mEntries = entries;
  mCapacity = static_cast<std::uint32_t>(capacity);
  rebuildTable();
}

void PropertyMap::truncate(std::uint32_t count) noexcept {
  // The removed values are released last: what they run may look at this map.
  const std::uint32_t removed = mCount - count;
  boost::container::small_vector<Ref<NSObject>, 16> dropped(removed);
  for (std::uint32_t index = 0; index < removed; ++index) dropped[index].swap(mEntries[count + index].value);
  std::destroy_n(mEntries + count, removed);
  mCount = count;
  rebuildTable();
}

void PropertyMap::set(PropertyKey key, Ref<NSObject> value) {
  if (!key) throw NSInvalidArgumentException("PropertyMap: an entry without a key");
  if (!value) throw NSInvalidArgumentException(format("PropertyMap: no value for the key %@", key));
  setPresent(key, std::move(value));
}

void PropertyMap::setPresent(PropertyKey key, Ref<NSObject> value) {
  const std::uint32_t index = indexOf(key);
  if (index != kNoIndex) {
    mEntries[index].value.swap(value);  // the old value goes at the end of this scope
    return;
  }
  if (mCount == mCapacity) grow(std::max<std::size_t>(3, std::size_t{mCapacity} * 2));
  ::new (static_cast<void*>(mEntries + mCount)) Entry{key, std::move(value)};
  enterInTable(key, mCount);
  ++mCount;
}

Ref<NSObject> PropertyMap::remove(PropertyKey key) {
  const std::uint32_t index = indexOf(key);
  if (index == kNoIndex) return {};
  Ref<NSObject> value = std::move(mEntries[index].value);
  std::move(mEntries + index + 1, mEntries + mCount, mEntries + index);
  std::destroy_at(mEntries + mCount - 1);
  --mCount;
  rebuildTable();
  return value;
}

void PropertyMap::removeAll() {
  if (mCount != 0) truncate(0);
}

void PropertyMap::addEntriesFrom(const PropertyMap& other) {
  if (&other == this) return;
  for (std::uint32_t index = 0; index < other.mCount; ++index)
    setPresent(other.mEntries[index].key, other.mEntries[index].value);
}

Ref<PropertySet> PropertyMap::keySet() const {
  Ref<PropertySet> keys = PropertySet::make();
  for (const Entry& entry : *this) keys->add(entry.key);
  return keys;
}

std::uint64_t PropertyMap::keyMask() const noexcept {
  std::uint64_t mask = 0;
  for (const Entry& entry : *this) mask |= entry.key.bit();
  return mask;
}

bool PropertyMap::isEqual(const PropertyMap& other) const {
  if (this == &other) return true;
  if (mCount != other.mCount) return false;
  for (std::uint32_t index = 0; index < mCount; ++index) {
    const Entry& mine = mEntries[index];
    // Variations copy maps, so that the order mostly agrees.
    const Entry& theirs = other.mEntries[index];
    const NSObject* value = theirs.key == mine.key ? theirs.value.get() : other.find(mine.key);
    if (value == nullptr || !sameOrEqual(mine.value.get(), value)) return false;
  }
  return true;
}

std::size_t PropertyMap::hash() const {
  // Added up, so that the order does not count; each entry is mixed first, so that dense values in
  // several properties do not cancel.
  std::size_t all = mCount;
  for (const Entry& entry : *this) {
    all += mixBits(entry.value->stableHash() + (entry.key.ordinal() + 1) * 0x9e3779b97f4a7c15ull);
  }
  return all;
}

std::string describe(const PropertyMap& map) {
  std::string text = "{";
  for (const PropertyMap::Entry& entry : map) {
    text += entry.key.view();
    text += " = ";
    text += entry.value->description();
    text += "; ";
  }
  return text + "}";
}

}  // namespace zt
