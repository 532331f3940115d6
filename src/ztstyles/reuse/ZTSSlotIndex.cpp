// SPDX-License-Identifier: MIT
#include <ztstyles/reuse/ZTSSlotIndex.h>

namespace zt {

void ZTSSlotIndex::add(std::uint32_t hash, Slot slot) {
  const auto [entry, isNew] = mFirst.try_emplace(hash, slot);
  if (isNew) return;
  const Slot first = entry->second & ~kHasFurther;
  if (first == slot) return;
  mFurther.emplace(hash, first < slot ? slot : first);
  entry->second = (first < slot ? first : slot) | kHasFurther;
}

void ZTSSlotIndex::remove(std::uint32_t hash, Slot slot) {
  const auto entry = mFirst.find(hash);
  if (entry == mFirst.end()) return;
  const bool isFirst = (entry->second & ~kHasFurther) == slot;
  if ((entry->second & kHasFurther) == 0) {
    if (isFirst) mFirst.erase(entry);
    return;
  }
  if (isFirst) {
    slot = nextFurther(hash, 0);
    entry->second = slot | kHasFurther;
  }
  mFurther.erase({hash, slot});
  if (nextFurther(hash, 0) == kNoSlot) entry->second &= ~kHasFurther;
}

ZTSSlotIndex::Slot ZTSSlotIndex::nextFurther(std::uint32_t hash, Slot from) const {
  const auto found = mFurther.lower_bound({hash, from});
  return found != mFurther.end() && found->first == hash ? found->second : kNoSlot;
}

void ZTSSlotIndex::clear() {
  mFirst = {};
  mFurther.clear();
}

}  // namespace zt
