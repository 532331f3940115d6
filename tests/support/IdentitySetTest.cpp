// SPDX-License-Identifier: MIT

// Identity sets and dictionaries: identity as the test, insertion order, snapshots, and a model for comparison.

#include <platform/NSNumber.h>
#include <support/ZTUCountedPointerSet.h>
#include <support/ZTUMutablePointerSet.h>
#include <support/ZTUMutableRetainedPointerSet.h>
#include <support/ZTUPair.h>
#include <support/ZTUPointerKeyDictionary.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace zt {
namespace {

std::vector<Ref<NSNumber>> numbers(int count) {
  std::vector<Ref<NSNumber>> all;
  for (int number = 0; number < count; ++number) all.push_back(NSNumber::withInteger(number));
  return all;
}

TEST(IdentitySetTest, TellsEqualObjectsApartAndHoldsOnlyIfItSaysSo) {
  const Ref<NSNumber> one = NSNumber::withInteger(1);
  const Ref<NSNumber> equal = NSNumber::withInteger(1);
  ZTUMutablePointerSet<NSObject> set;
  for (NSObject* each : std::initializer_list<NSObject*>{one.get(), one.get(), equal.get(), nullptr})
    set.addObject(each);
  EXPECT_EQ(set.count(), 2u);
  EXPECT_EQ(equal->referenceCount(), 1u);
  set.removeObject(one.get());
  EXPECT_TRUE(set.containsObject(equal.get()));
  EXPECT_EQ(set.anyObject(), equal.get());

  ZTUMutableRetainedPointerSet<NSObject> holding;
  holding.addObject(equal.get());
  EXPECT_EQ(equal->referenceCount(), 2u);
  EXPECT_EQ(sizeof set, 8u);
}

TEST(IdentitySetTest, AgreesWithASlowModelInContentsAndOrder) {
  std::mt19937 random(7);
  const auto pool = numbers(400);
  ZTUMutablePointerSet<NSNumber> set;
  std::vector<NSNumber*> model;
  for (int step = 0; step < 60'000; ++step) {
    // The set swells and shrinks, so that it passes the walked sizes, grows and compacts.
    const std::size_t span = step / 10'000 % 2 == 0 ? 400 : 12;
    NSNumber* number = pool[random() % span].get();
    const bool isMember = std::find(model.begin(), model.end(), number) != model.end(), adds = random() % 2 == 0;
    EXPECT_EQ(set.containsObject(number), isMember);
    EXPECT_EQ(adds ? set.addObject(number) : set.removeObject(number), adds != isMember);
    if (!adds) std::erase(model, number);
    if (adds && !isMember) model.push_back(number);
    ASSERT_EQ(set.count(), model.size());
    if (step % 101 == 0) {
      ASSERT_EQ(set.allObjects(), model);
    }
  }
}

// A short text lies in the object itself, which holds its own address.
static_assert(kMoveByBits<int, Ref<NSNumber>> && !kMoveByBits<Ref<NSNumber>, std::string>);

/// Numbers whose hashes leave as few different bits as `kMask` has.
template <std::uint32_t kMask>
struct CrowdedPolicy {
  using Key = int;
  static constexpr bool kMovesByBits = kMoveByBits<int>;
  static int keyOf(int entry) { return entry; }
  static bool isHole(int entry) { return entry == 0; }
  static int hole() { return 0; }
  static std::size_t hash(int key) { return (static_cast<std::uint32_t>(key) * 0x9e3779b1u) | ~kMask; }
  static std::size_t hashOf(int entry) { return hash(entry); }
  static bool matches(int entry, int key) { return entry == key; }
};

template <std::uint32_t kMask>
void agreeWithASlowModel() {
  std::mt19937 random(kMask);
  OrderedTable<int, CrowdedPolicy<kMask>> table;
  std::vector<int> model;
  for (int step = 0; step < 20'000; ++step) {
    const int number = 1 + static_cast<int>(random() % 120);
    const bool isMember = std::find(model.begin(), model.end(), number) != model.end();
    ASSERT_EQ(table.contains(number), isMember);
    // Half full to nearly empty and back, so that runs of cells form, wrap around the end and close again.
    if (random() % 400 < (step / 2000 % 2 == 0 ? 250u : 150u)) {
      ASSERT_NE(table.insert(number).second, isMember);
      if (!isMember) model.push_back(number);
    } else {
      ASSERT_EQ(table.remove(number), isMember);
      std::erase(model, number);
    }
    ASSERT_EQ(table.count(), model.size());
    ASSERT_TRUE(std::equal(table.begin(), table.end(), model.begin(), model.end()));
  }
}

TEST(OrderedTableTest, FindsAndRemovesHoweverTheHashesCrowd) {
  agreeWithASlowModel<0>();            // one home, the last place of the table: all behind it wrap
  agreeWithASlowModel<0b11>();         // a few homes in a row
  agreeWithASlowModel<0xf0000000u>();  // different only in bits that cells do not keep
  agreeWithASlowModel<0x0ffffff0u>();  // one home while the table is small, told apart by the bits in the cells
}

TEST(IdentitySetTest, DoesSetAlgebraByIdentity) {
  const auto n = numbers(6);
  const auto setOf = [&](std::initializer_list<int> places) {
    ZTUMutablePointerSet<NSNumber> set;
    for (int place : places) set.addObject(n[static_cast<std::size_t>(place)].get());
    return set;
  };
  auto set = setOf({0, 1, 2, 3});
  const auto snapshot = ZTUMutablePointerSet<NSNumber>::setWithSet(set);
  set.minusSet(setOf({1}));
  set.intersectSet(setOf({0, 2, 5}));
  set.unionSet(setOf({4, 0}));
  EXPECT_EQ(set.allObjects(), setOf({0, 2, 4}).allObjects());
  EXPECT_EQ(snapshot.count(), 4u);
  EXPECT_TRUE(setOf({2, 0}).isSubsetOfSet(set));
  EXPECT_TRUE(setOf({4, 2, 0}).isEqualToSet(set));
  EXPECT_FALSE(setOf({4, 2}).isEqualToSet(set));
  set.setSet(set);
  EXPECT_EQ(set.count(), 3u);
  set.setSet(setOf({5}));
  EXPECT_EQ(set.allObjects(), setOf({5}).allObjects());
}

TEST(IdentitySetTest, ComparesContentsByEqualityInBothDirections) {
  const auto a = numbers(3), b = numbers(3);
  ZTUMutablePointerSet<NSNumber> left, right;
  for (const auto& number : a) left.addObject(number.get());
  for (auto number = b.rbegin(); number != b.rend(); ++number) right.addObject(number->get());
  EXPECT_TRUE(left.isEqualToContentsOfSet(right));
  right.removeObject(b[1].get());
  EXPECT_FALSE(left.isEqualToContentsOfSet(right));
  const Ref<NSNumber> twin = NSNumber::withInteger(0);
  right.addObject(twin.get());  // {2, 0, 0}: as many members, each with an equal one on the left, but 1 has none
  EXPECT_FALSE(left.isEqualToContentsOfSet(right));
}

TEST(IdentitySetTest, SurvivesChangesWhileItIsWalked) {
  struct Leaver : NSObject {
    explicit Leaver(ZTUMutableRetainedPointerSet<Leaver>& set) : home(set) {}
    ~Leaver() override {
      if (next) home.removeObject(next);
    }
    ZTUMutableRetainedPointerSet<Leaver>& home;
    Leaver* next = nullptr;
  };
  ZTUMutableRetainedPointerSet<Leaver> set;
  for (int member = 0; member < 20; ++member) set.addObject(new Leaver(set));
  const auto members = set.allObjects();
  for (std::size_t member = 0; member + 1 < members.size(); ++member) members[member]->next = members[member + 1];
  set.removeObject(members[0]);  // each one's end removes the next
  EXPECT_TRUE(set.isEmpty());

  int calls = 0;
  for (int member = 0; member < 5; ++member) set.addObject(new Leaver(set));
  set.makeObjectsPerform([&](Leaver&) {
    ++calls;
    set.removeAllObjects();
  });
  EXPECT_EQ(calls, 5);
}

TEST(CountedPointerSetTest, KeepsAMemberWhileItsCountIsAboveZero) {
  const auto n = numbers(40);
  ZTUCountedPointerSet<NSNumber> set;
  for (const auto& number : n) set.addObject(number.get());
  set.addObject(n[3].get());
  set.removeObject(n[3].get());
  EXPECT_TRUE(set.containsObject(n[3].get()));
  for (int times = 0; times < 2; ++times) set.removeObject(n[3].get());
  EXPECT_FALSE(set.containsObject(n[3].get()));
  EXPECT_EQ(set.count(), 39u);
}

TEST(CountedPointerSetTest, DoesSetAlgebraAndComparesByIdentity) {
  const auto n = numbers(5);
  using Counts = std::vector<std::size_t>;
  const auto setOf = [&](std::initializer_list<int> members) {
    ZTUCountedPointerSet<NSNumber> set;
    for (const int member : members) set.addObject(n[static_cast<std::size_t>(member)].get());
    return set;
  };
  const auto countsIn = [&](const ZTUCountedPointerSet<NSNumber>& set) {
    Counts counts;
    for (const auto& number : n) counts.push_back(set.countForObject(number.get()));
    return counts;
  };
  ZTUMutablePointerSet<NSNumber> plain;
  for (const int member : {1, 4}) plain.addObject(n[static_cast<std::size_t>(member)].get());
  auto set = setOf({0, 1, 1});
  set.unionSet(setOf({1, 2, 2, 2}));
  set.unionSet(plain);
  EXPECT_EQ(countsIn(set), (Counts{1, 2, 3, 0, 1}));
  EXPECT_TRUE(setOf({2, 1}).isSubsetOfSet(set));
  EXPECT_FALSE(setOf({3}).isSubsetOfSet(set));
  EXPECT_FALSE(set.isSubsetOfSet(plain));
  EXPECT_TRUE(setOf({4, 4, 1}).isEqualToSet(plain));
  ZTUCountedPointerSet<NSNumber> equals;
  const auto one = NSNumber::withInteger(1);
  const auto four = NSNumber::withInteger(4);
  for (const auto& number : {four, one, one}) equals.addObject(number.get());
  EXPECT_TRUE(equals.isEqualToContentsOfSet(plain));
  EXPECT_FALSE(equals.isEqualToSet(plain));
  EXPECT_FALSE(setOf({1, 3}).isEqualToContentsOfSet(equals));
  EXPECT_FALSE(setOf({1}).isEqualToContentsOfSet(equals));
  std::size_t calls = 0;
  auto leaving = setOf({0, 1, 1, 2});
  leaving.makeObjectsPerform([&](NSNumber& number) {
    ++calls;
    if (&number == n[0].get()) leaving.removeObject(n[2].get());
  });
  EXPECT_EQ(calls, 2u);
  set.minusSet(setOf({0, 2}));
  EXPECT_EQ(countsIn(set), (Counts{0, 2, 0, 0, 1}));
  set.intersectSet(setOf({1, 3}));
  EXPECT_EQ(countsIn(set), (Counts{0, 2, 0, 0, 0}));
  set.minusSet(set);
  EXPECT_TRUE(set.isEmpty());
  set.setSet(setOf({3, 2, 3}));
  EXPECT_EQ(countsIn(set), (Counts{0, 0, 1, 2, 0}));
  EXPECT_EQ(set.anyObject(), n[3].get());
}

TEST(PointerKeyDictionaryTest, FindsByIdentityAndHoldsBoth) {
  const Ref<NSNumber> key = NSNumber::withInteger(1), equalKey = NSNumber::withInteger(1);
  const auto dictionary = make<ZTUPointerKeyDictionary>();
  dictionary->setObjectForKey(key, key);
  dictionary->setObjectForKey(equalKey, key);
  dictionary->setObjectForKey({}, key);
  EXPECT_EQ(dictionary->allKeys(), std::vector<Ref<NSObject>>{key});
  EXPECT_EQ(dictionary->objectForKey(key.get()), equalKey.get());
  EXPECT_EQ(dictionary->objectForKey(equalKey.get()), nullptr);
  dictionary->removeObjectForKey(key.get());
  EXPECT_EQ(key->referenceCount(), 1u);

  const auto pair = ZTUPair::pairWithFirstSecond(key, {});
  EXPECT_TRUE(pair->isEqual(ZTUPair::pairWithFirstSecond(equalKey, {}).get()));
  EXPECT_EQ(pair->second(), nullptr);
}

}  // namespace
}  // namespace zt
