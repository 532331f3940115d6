// SPDX-License-Identifier: MIT
#pragma once

#include <platform/PropertySet.h>

#include <initializer_list>

namespace zt {

/// A property map: property key to value, the currency of the whole library. A counted object;
/// `Ref<const PropertyMap>` is a map that may be shared, `Ref<PropertyMap>` one that its holder may
/// change. Values are present: "explicitly no value" is an entry that holds the null sentinel.
///
/// Enumerates in insertion order, which a replaced value keeps. Equality ignores the order, and so
/// does the hash. Up to 16 entries a search is a walk over adjacent keys; above, a slot table behind
/// the entries is asked. One block of memory while it does not outgrow the capacity it was made with.
class ZT_EXPORT PropertyMap final : public Counted<PropertyMap> {
 public:
  struct Entry {
    PropertyKey key;
    Ref<NSObject> value;
  };

  /// An empty map with room for so many entries.
  static Ref<PropertyMap> make(std::size_t capacity = 0);
  /// A map with these entries; a later entry replaces an earlier one of the same key. Raises as `set` does.
  static Ref<PropertyMap> with(std::initializer_list<Entry> entries);

  /// A map of its own with the same entries, in the same order, with room for `more` further ones.
  [[nodiscard]] Ref<PropertyMap> copy(std::size_t more = 0) const;

  [[nodiscard]] std::size_t count() const noexcept { return mCount; }
  [[nodiscard]] bool isEmpty() const noexcept { return mCount == 0; }

  /// The value, borrowed until the map changes; none without an entry.
  [[nodiscard]] NSObject* find(PropertyKey key) const noexcept {
    return hasTable() ? findInTable(key) : findByWalking(key);
  }
  [[nodiscard]] bool contains(PropertyKey key) const noexcept { return find(key) != nullptr; }

  /// Whether the map has outgrown being walked. For code that must not call anything while it has not.
  [[nodiscard]] bool hasTable() const noexcept { return mCapacity > kWalked; }
  /// `find` for a map without a table.
  [[nodiscard]] NSObject* findByWalking(PropertyKey key) const noexcept {
    for (const Entry *entry = mEntries, *end = mEntries + mCount; entry != end; ++entry) {
      if (entry->key == key) return entry->value.get();
    }
    return nullptr;
  }

  /// Stores the value under the key. The replaced value is released when the map is whole again. Raises
  /// `NSInvalidArgumentException`, with nothing changed, for no key and for a value of none.
  void set(PropertyKey key, Ref<NSObject> value);
  /// The same for a key and a value that are known to be there.
  void setPresent(PropertyKey key, Ref<NSObject> value);
  /// Removes the entry and answers its value, or none. The others keep their order. Linear.
  Ref<NSObject> remove(PropertyKey key);
  /// Removes every entry for which the question is answered with true, in one pass.
  template <class Question>
  std::size_t removeIf(Question question);
  void removeAll();

  /// Adds all entries of another map, replacing entries of the same key. Adding a map to itself does nothing.
  void addEntriesFrom(const PropertyMap& other);

  /// The entries in order. No reference into them survives a change of the map.
  [[nodiscard]] const Entry* begin() const noexcept { return mEntries; }
  [[nodiscard]] const Entry* end() const noexcept { return mEntries + mCount; }
  [[nodiscard]] const Entry& at(std::size_t index) const noexcept { return mEntries[index]; }

  /// The keys as a new set.
  [[nodiscard]] Ref<PropertySet> keySet() const;
  /// The keys' bits: no entry has a key whose bit is missing.
  [[nodiscard]] std::uint64_t keyMask() const noexcept;

  /// Same keys, and values that are the same object or equal by their own equality.
  [[nodiscard]] bool isEqual(const PropertyMap& other) const;
  /// Agrees with equality and does not change while the entries stay (see `NSObject::stableHash`).
  [[nodiscard]] std::size_t hash() const;

  ~PropertyMap();
  void operator delete(void* memory) noexcept;

 private:
  static constexpr std::uint32_t kWalked = 16;

  explicit PropertyMap(std::uint32_t capacity) noexcept;
  static std::size_t bytesFor(std::size_t capacity) noexcept;
  static std::uint32_t tableSizeFor(std::uint32_t capacity) noexcept;
  [[nodiscard]] Entry* ownRoom() noexcept { return reinterpret_cast<Entry*>(this + 1); }
  [[nodiscard]] std::uint32_t* table() const noexcept { return reinterpret_cast<std::uint32_t*>(mEntries + mCapacity); }
  [[nodiscard]] NSObject* findInTable(PropertyKey key) const noexcept;
  [[nodiscard]] std::uint32_t indexOf(PropertyKey key) const noexcept;
  void enterInTable(PropertyKey key, std::uint32_t index) noexcept;
  void rebuildTable() noexcept;
  void grow(std::size_t capacity);
  void truncate(std::uint32_t count) noexcept;

  std::uint32_t mCount = 0;
  std::uint32_t mCapacity;
  Entry* mEntries;  // in the object's own block, or in a block on the heap once it has outgrown that
};

template <class Question>
std::size_t PropertyMap::removeIf(Question question) {
  std::uint32_t kept = 0;
  for (std::uint32_t index = 0; index < mCount; ++index) {
    if (question(static_cast<const Entry&>(mEntries[index]))) continue;
    if (kept != index) std::swap(mEntries[kept], mEntries[index]);
    ++kept;
  }
  const std::size_t removed = mCount - kept;
  if (removed != 0) truncate(kept);
  return removed;
}

/// What `%@` prints for a map: `{a = 1; b = 2; }`.
ZT_EXPORT std::string describe(const PropertyMap& map);

}  // namespace zt
