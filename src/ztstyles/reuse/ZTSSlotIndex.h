// SPDX-License-Identifier: MIT
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>

#include <cstdint>
#include <set>
#include <utility>

namespace zt {

/// From a hash to the slots of an ordered table that were entered under it, smallest first. Nearly every hash
/// has one slot, which takes some 10 bytes; the further ones of a hash stand in an ordered set.
class ZTSSlotIndex {
 public:
  using Slot = std::uint32_t;
  static constexpr Slot kNoSlot = ~Slot{0};

  void add(std::uint32_t hash, Slot slot);
  void remove(std::uint32_t hash, Slot slot);
  /// The smallest slot under the hash that is not below `from`; kNoSlot if there is none.
  [[nodiscard]] Slot next(std::uint32_t hash, Slot from) const {
    const auto found = mFirst.find(hash);
    if (found == mFirst.end()) return kNoSlot;
    const Slot first = found->second & ~kHasFurther;
    if (first >= from) return first;
    return (found->second & kHasFurther) != 0 ? nextFurther(hash, from) : kNoSlot;
  }
  [[nodiscard]] std::size_t count() const noexcept { return mFirst.size() + mFurther.size(); }
  void clear();
  void reserve(std::size_t count) { mFirst.reserve(count); }

 private:
  static constexpr Slot kHasFurther = Slot{1} << 31;  // tables have less than 2^30 slots

  [[nodiscard]] Slot nextFurther(std::uint32_t hash, Slot from) const;

  boost::unordered_flat_map<std::uint32_t, Slot> mFirst;
  std::set<std::pair<std::uint32_t, Slot>> mFurther;
};

}  // namespace zt
