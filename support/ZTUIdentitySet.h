// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <support/OrderedTable.h>

#include <unordered_map>
#include <vector>

namespace zt {

/// What the identity sets have in common. Members are compared by identity: two styles with equal
/// properties are two members. Enumerates in insertion order; adding, removing and finding take
/// constant time at any size; 8 bytes while empty.
///
/// `Entry` is `T*` for a set that does not hold its members and `Ref<T>` for one that does. The owner
/// of a set that does not hold them must remove a member before the member is destroyed.
template <class T, class Entry, class Policy>
class ZTUIdentitySet {
 public:
  using Member = T;
  using Table = OrderedTable<Entry, Policy>;

  ZTUIdentitySet() = default;

  /// A snapshot of another identity set of the same members: later changes of either do not reach the other.
  template <class OtherEntry, class OtherPolicy>
  static auto setWithSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) {
    ZTUIdentitySet set;
    set.unionSet(other);
    return set;
  }

  /// Adds a member; adding one twice keeps one. None is not added. Answers whether it was new.
  bool addObject(T* object) { return object != nullptr && mTable.insert(Entry(object)).second; }
  /// Removes a member; answers whether it was one. A held member is released when the set is whole again.
  bool removeObject(const T* object) noexcept { return mTable.remove(object); }
  void removeAllObjects() noexcept { mTable.removeAll(); }
  /// Room for one more member: adding it then allocates nothing.
  void makeRoom() { mTable.reserveOne(); }

  [[nodiscard]] bool containsObject(const T* object) const noexcept {
    return object != nullptr && mTable.contains(object);
  }
  [[nodiscard]] std::size_t count() const noexcept { return mTable.count(); }
  [[nodiscard]] bool isEmpty() const noexcept { return mTable.isEmpty(); }

  /// The first member, or none.
  [[nodiscard]] T* anyObject() const noexcept {
    for (const Entry& entry : mTable) return &*entry;
    return nullptr;
  }
  /// The members as plain pointers, in order.
  [[nodiscard]] std::vector<T*> allObjects() const {
    std::vector<T*> all;
    all.reserve(count());
    for (const Entry& entry : mTable) all.push_back(&*entry);
    return all;
  }
  /// The members as references, in order: what to walk when what is called may release them. A member
  /// whose destruction has begun is left out.
  [[nodiscard]] std::vector<Ref<T>> retainedSnapshot() const {
    std::vector<Ref<T>> all;
    all.reserve(count());
    for (const Entry& entry : mTable) {
      if (Ref<T> held = retainIfAlive(&*entry)) all.push_back(std::move(held));
    }
    return all;
  }

  template <class OtherEntry, class OtherPolicy>
  void unionSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) {
    if (static_cast<const void*>(this) == &other) return;
    mTable.reserve(other.count());
    for (const OtherEntry& entry : other.table()) addObject(&*entry);
  }
  template <class OtherEntry, class OtherPolicy>
  void minusSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) {
    for (T* member : allObjects()) {
      if (other.containsObject(member)) removeObject(member);
    }
  }
  template <class OtherEntry, class OtherPolicy>
  void intersectSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) {
    for (T* member : allObjects()) {
      if (!other.containsObject(member)) removeObject(member);
    }
  }
  template <class OtherEntry, class OtherPolicy>
  void setSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) {
    if (static_cast<const void*>(this) == &other) return;
    Table old = std::exchange(mTable, Table());
    unionSet(other);
  }

  template <class OtherEntry, class OtherPolicy>
  [[nodiscard]] bool isSubsetOfSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) const noexcept {
    for (const Entry& entry : mTable) {
      if (!other.containsObject(&*entry)) return false;
    }
    return true;
  }
  template <class OtherEntry, class OtherPolicy>
  [[nodiscard]] bool isEqualToSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) const noexcept {
    return count() == other.count() && isSubsetOfSet(other);
  }

  /// Whether both have the same number of members and each member of the one has a member of the other
  /// that is equal to it by its own equality. Members that `shapeOf` gives different numbers are never
  /// compared: it must answer the same for equal members. With a good shape the cost is linear.
  template <class OtherEntry, class OtherPolicy, class Shape>
  [[nodiscard]] bool isEqualToContentsOfSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other,
                                            Shape shapeOf) const {
    if (count() != other.count()) return false;
    const std::vector<T*> mine = allObjects();
    const std::vector<T*> theirs = other.allObjects();
    return eachHasAnEqual(mine, theirs, shapeOf) && eachHasAnEqual(theirs, mine, shapeOf);
  }
  template <class OtherEntry, class OtherPolicy>
  [[nodiscard]] bool isEqualToContentsOfSet(const ZTUIdentitySet<T, OtherEntry, OtherPolicy>& other) const {
    return isEqualToContentsOfSet(other, [](T& member) { return member.hash(); });
  }

  /// Calls the operation on every member of a snapshot taken before the first call.
  template <class Operation>
  void makeObjectsPerform(Operation operation) const {
    for (const Ref<T>& member : retainedSnapshot()) operation(*member);
  }

  /// The enumerator: a live walk. The set must not change in a way that compacts it meanwhile.
  class Enumerator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T*;
    using difference_type = std::ptrdiff_t;
    using pointer = T* const*;
    using reference = T*;

    Enumerator() = default;
    explicit Enumerator(typename Table::const_iterator place) noexcept : mPlace(place) {}
    T* operator*() const noexcept { return &**mPlace; }
    Enumerator& operator++() noexcept {
      ++mPlace;
      return *this;
    }
    Enumerator operator++(int) noexcept {
      Enumerator before = *this;
      ++mPlace;
      return before;
    }
    friend bool operator==(const Enumerator& left, const Enumerator& right) noexcept {
      return left.mPlace == right.mPlace;
    }

   private:
    typename Table::const_iterator mPlace;
  };
  [[nodiscard]] Enumerator begin() const noexcept { return Enumerator(mTable.begin()); }
  [[nodiscard]] Enumerator end() const noexcept { return Enumerator(mTable.end()); }

  /// The table underneath, for an index that keeps slot numbers.
  [[nodiscard]] const Table& table() const noexcept { return mTable; }

 private:
  template <class Shape>
  static bool eachHasAnEqual(const std::vector<T*>& wanted, const std::vector<T*>& offered, Shape& shapeOf) {
    std::unordered_multimap<std::size_t, T*> byShape;
    byShape.reserve(offered.size());
    for (T* member : offered) byShape.emplace(shapeOf(*member), member);
    for (T* member : wanted) {
      auto [first, last] = byShape.equal_range(shapeOf(*member));
      if (!std::any_of(first, last,
                       [&](const auto& entry) { return entry.second == member || member->isEqual(entry.second); }))
        return false;
    }
    return true;
  }

  Table mTable;
};

}  // namespace zt
