// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTUIdentitySet.h>

#include <algorithm>

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
  /// Calls the operation on every member, once each, of a snapshot taken before the first call. One that has left
  /// meanwhile is left out: it may be gone.
  template <class Operation>
  void makeObjectsPerform(Operation operation) const {
    for (T* object : allObjects()) {
      if (containsObject(object)) operation(*object);
    }
  }

  /// The members, each once, in order.
  [[nodiscard]] std::vector<T*> allObjects() const {
    std::vector<T*> all;
    all.reserve(count());
    for (const Counted& entry : mTable) all.push_back(entry.object);
    return all;
  }

  /// @name Algebra and comparison
  /// By identity, with a set of either kind. In a set that does not count each member counts once.
  /// @{

  /// Adds the members of the other set that are none of this one, with their counts there.
  template <class Set>
  void unionSet(const Set& other) {
    for (T* object : other.allObjects()) {
      if (!containsObject(object)) mTable.insert(Counted{object, countIn(other, object)});
    }
  }
  /// Removes the members that the other set has, whatever their counts.
  template <class Set>
  void minusSet(const Set& other) {
    for (T* object : other.allObjects()) mTable.remove(object);
  }
  /// Keeps the members that the other set has, with their counts here.
  template <class Set>
  void intersectSet(const Set& other) {
    for (T* object : allObjects()) {
      if (!other.containsObject(object)) mTable.remove(object);
    }
  }
  /// Takes over the members of the other set, in its order, with their counts there.
  template <class Set>
  void setSet(const Set& other) {
    ZTUCountedPointerSet taken;
    taken.unionSet(other);
    std::swap(mTable, taken.mTable);
  }
  /// Whether the other set has all members of this one. The counts play no part, nor below.
  template <class Set>
  [[nodiscard]] bool isSubsetOfSet(const Set& other) const noexcept {
    for (const Counted& entry : mTable) {
      if (!other.containsObject(entry.object)) return false;
    }
    return true;
  }
  template <class Set>
  [[nodiscard]] bool isEqualToSet(const Set& other) const noexcept {
    return count() == other.count() && isSubsetOfSet(other);
  }
  /// Whether both have the same number of members and each member of the one has a member of the other that is equal to
  /// it by its own equality. Quadratic.
  template <class Set>
  [[nodiscard]] bool isEqualToContentsOfSet(const Set& other) const {
    const std::vector<T*> mine = allObjects();
    const std::vector<T*> theirs = other.allObjects();
    const auto eachHasAnEqual = [](const std::vector<T*>& wanted, const std::vector<T*>& offered) {
      return std::all_of(wanted.begin(), wanted.end(), [&](T* member) {
        return std::any_of(offered.begin(), offered.end(),
                           [&](T* one) { return one == member || member->isEqual(one); });
      });
    };
    return mine.size() == theirs.size() && eachHasAnEqual(mine, theirs) && eachHasAnEqual(theirs, mine);
  }
  /// @}

 private:
  template <class Set>
  static std::size_t countIn(const Set& set, const T* object) noexcept {
    if constexpr (requires { set.countForObject(object); }) {
      return set.countForObject(object);
    } else {
      return 1;
    }
  }

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
