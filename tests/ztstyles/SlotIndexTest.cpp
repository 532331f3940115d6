// SPDX-License-Identifier: MIT
// The table of slots under the indexes for variations, against the plain way to keep it.

#include <ztstyles/reuse/ZTSSlotIndex.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace zt::testing {
namespace {

TEST(SlotIndexTest, AnswersTheNextSlotUnderAHashWhateverWasEnteredAndRemoved) {
  using Slot = ZTSSlotIndex::Slot;
  std::mt19937 random{11};
  const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
  for (int round = 0; round < 4 && !::testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    ZTSSlotIndex index;
    std::map<std::uint32_t, std::set<Slot>> plain;
    for (int step = 0; step < 400 && !::testing::Test::HasFailure(); ++step) {
      const std::uint32_t hash = below(6);
      const Slot slot = below(round % 2 == 0 ? 4 : 40);
      if (below(2) == 0) {
        index.add(hash, slot);
        plain[hash].insert(slot);
      } else {
        index.remove(hash, slot);
        plain[hash].erase(slot);
      }
      std::size_t count = 0;
      for (std::uint32_t each = 0; each < 6; ++each) {
        const std::set<Slot>& slots = plain[each];
        count += slots.size();
        for (Slot from = 0; from < 42; ++from) {
          const auto next = slots.lower_bound(from);
          if (index.next(each, from) != (next != slots.end() ? *next : ZTSSlotIndex::kNoSlot)) {
            ADD_FAILURE() << "from " << from << " under " << each;
          }
        }
      }
      ASSERT_EQ(index.count(), count) << "nothing is kept that was removed, and nothing twice";
    }
    index.clear();
    EXPECT_EQ(index.count(), 0u);
    EXPECT_EQ(index.next(0, 0), ZTSSlotIndex::kNoSlot);
  }
}

}  // namespace
}  // namespace zt::testing
