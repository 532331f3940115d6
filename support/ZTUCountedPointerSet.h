#pragma once

#include <support/ZTUIdentitySet.h>

namespace zt {

/// A counted identity set that does not hold its members: each addition of an object adds one to its
/// count, each removal takes one away, and the object is a member while its count is above zero.
/// 8 bytes while empty. Enumerates each member once, in the order in which they became members.
template <class T>
class ZTUCountedPointerSet {
 public:
  /// Adds one to the count of the object. None is not added.
  void addObject(T* object) {
    if (object != nullptr) ++mTable.insert(Counted{object, 0}).first->count;
  }
  /// Takes one away; an object that is no member is left alone.
  void removeObject(const T* object) noexcept {
    Counted* entry = mTable.find(object);
    if (entry != nullptr && --entry->count == 0) mTable.remove(object);
  }

  [[nodiscard]] bool containsObject(const T* object) const noexcept { return mTable.contains(object); }
  /// How often the object was added and not removed.
  [[nodiscard]] std::size_t countForObject(const T* object) const noexcept {
    const Counted* entry = mTable.find(object);
    return entry != nullptr ? entry->count : 0;
  }
  /// The number of distinct members.
  [[nodiscard]] std::size_t count() const noexcept { return mTable.count(); }
  [[nodiscard]] bool isEmpty() const noexcept { return mTable.isEmpty(); }
  /// The first member, or none.
  [[nodiscard]] T* anyObject() const noexcept {
    for (const Counted& entry : mTable) return entry.object;
    return nullptr;
  }
  /// The members, each once, in order.
  [[nodiscard]] std::vector<T*> allObjects() const {
    std::vector<T*> all;
    all.reserve(count());
    for (const Counted& entry : mTable) all.push_back(entry.object);
    return all;
  }

 private:
  struct Counted {
    T* object;
    std::size_t count;
  };
  struct Policy {
    using Key = const void*;
    static constexpr bool kMovesByBits = kMoveByBits<Counted>;
    static const void* keyOf(const Counted& entry) noexcept { return entry.object; }
    static bool isHole(const Counted& entry) noexcept { return entry.object == nullptr; }
    static Counted hole() noexcept { return {nullptr, 0}; }
    static std::size_t hash(const void* key) noexcept { return hashOfAddress<T>(key); }
    static std::size_t hashOf(const Counted& entry) noexcept { return hash(entry.object); }
    static bool matches(const Counted& entry, const void* key) noexcept { return entry.object == key; }
  };

  OrderedTable<Counted, Policy> mTable;
};

}  // namespace zt
