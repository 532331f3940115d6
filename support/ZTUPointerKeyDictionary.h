// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <support/OrderedTable.h>

#include <vector>

namespace zt {

/// A dictionary that compares its keys by identity and holds keys and values. Enumerates in insertion
/// order. An object itself, so that it can stand in an archiver's metadata.
template <class K, class V>
class ZTUPointerKeyDictionaryOf final : public NSObject {
 public:
  /// The value, borrowed until the dictionary changes; none without an entry.
  [[nodiscard]] V* objectForKey(const K* key) const noexcept {
    const Entry* entry = mTable.find(key);
    return entry != nullptr ? entry->value.get() : nullptr;
  }
  /// Stores the value under the key, replacing an earlier one. Neither may be none: then nothing happens.
  void setObjectForKey(Ref<V> value, Ref<K> key) {
    if (!value || !key) return;
    auto [entry, isNew] = mTable.insert(Entry{std::move(key), value});
    if (!isNew) entry->value.swap(value);
  }
  void removeObjectForKey(const K* key) noexcept { mTable.remove(key); }
  [[nodiscard]] std::size_t count() const noexcept { return mTable.count(); }
  /// The keys as a snapshot, in order.
  [[nodiscard]] std::vector<Ref<K>> allKeys() const {
    std::vector<Ref<K>> keys;
    keys.reserve(count());
    for (const Entry& entry : mTable) keys.push_back(entry.key);
    return keys;
  }
  /// The values as a snapshot, in the order of their keys.
  [[nodiscard]] std::vector<Ref<V>> allValues() const {
    std::vector<Ref<V>> values;
    values.reserve(count());
    for (const Entry& entry : mTable) values.push_back(entry.value);
    return values;
  }

  /// Calls with each value, in the order of their keys. The dictionary must not change meanwhile.
  template <class Visit>
  void forEachValue(Visit visit) const {
    for (const Entry& entry : mTable) visit(entry.value);
  }

 private:
  struct Entry {
    Ref<K> key;
    Ref<V> value;
  };
  struct Policy {
    using Key = const void*;
    static constexpr bool kMovesByBits = kMoveByBits<Ref<K>, Ref<V>>;
    static const void* keyOf(const Entry& entry) noexcept { return entry.key.get(); }
    static bool isHole(const Entry& entry) noexcept { return entry.key == nullptr; }
    static Entry hole() noexcept { return {}; }
    static std::size_t hash(const void* key) noexcept { return hashOfAddress<K>(key); }
    static std::size_t hashOf(const Entry& entry) noexcept { return hash(entry.key.get()); }
    static bool matches(const Entry& entry, const void* key) noexcept { return entry.key.get() == key; }
  };

  OrderedTable<Entry, Policy> mTable;
};

/// The form that the archive's metadata uses: any object to any object.
using ZTUPointerKeyDictionary = ZTUPointerKeyDictionaryOf<NSObject, NSObject>;

}  // namespace zt
