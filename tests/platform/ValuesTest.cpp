// SPDX-License-Identifier: MIT

// Values, keys, sets of keys, property maps: equality agrees with hashes, maps agree with a slow model.

#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <platform/NSValue.h>
#include <platform/PropertyMap.h>
#include <platform/ZTClass.h>
#include <tests/AllocationFailures.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>
#include <unordered_set>

namespace zt {
namespace {

TEST(ValueTest, EqualityAndHashAgree) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Values in one group are equal to one another and to nothing in another group.
  const std::vector<std::vector<Ref<NSObject>>> groups{
      {NSNumber::withInteger(1), NSNumber::withReal(1.0)},
      {NSNumber::withBool(true), NSNumber::withBool(true)},
      {NSNumber::withBool(false)},
      {NSNumber::withInteger(0), NSNumber::withReal(0.0), NSNumber::withReal(-0.0)},
      {NSNumber::withReal(nan), NSNumber::withReal(-nan)},
      {NSNumber::withReal(0.5)},
      {NSNumber::withInteger((std::int64_t{1} << 53) + 1)},
      {NSNumber::withInteger(std::int64_t{1} << 53), NSNumber::withReal(9007199254740992.0)},
      {NSNumber::withInteger(std::numeric_limits<std::int64_t>::max())},
      {NSNumber::withReal(9223372036854775808.0)},
      {NSNumber::withReal(std::numeric_limits<double>::infinity())},
      {NSString::make("1"), NSString::make("1")},
      {NSString::make("")},
      {NSColor::withComponents(1, 2, 3), NSColor::withComponents(1, 2, 3, 255)},
      {NSColor::withComponents(1, 2, 3, 0)},
      {NSArray::withObjects({NSNumber::withInteger(1), NSString::make("a")}),
       NSArray::withObjects({NSNumber::withReal(1), NSString::make("a")})},
      {NSArray::withObjects({NSString::make("a"), NSNumber::withInteger(1)})},
      {NSArray::withObjects({})},
      {NSNull::null()},
      {NSValue::withPointer(nullptr)},
  };
  for (std::size_t left = 0; left < groups.size(); ++left) {
    for (std::size_t right = 0; right < groups.size(); ++right) {
      for (const auto& a : groups[left]) {
        for (const auto& b : groups[right]) {
          ASSERT_EQ(a->isEqual(b.get()), left == right) << a->description() << " and " << b->description();
          if (left != right) continue;
          ASSERT_EQ(a->hash(), b->hash()) << a->description();
          ASSERT_EQ(a->stableHash(), b->stableHash()) << a->description();
        }
        EXPECT_FALSE(a->isEqual(nullptr));
      }
    }
  }
}

TEST(ValueTest, ConvertsAndDescribes) {
  EXPECT_EQ(NSNumber::withReal(1e300)->integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(NSNumber::withReal(-1e300)->integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(NSNumber::withReal(-2.9)->integerValue(), -2);
  EXPECT_EQ(NSNumber::withReal(0.1)->description(), "0.1");
  EXPECT_EQ(NSNumber::withBool(true)->description(), "YES");
  EXPECT_EQ(NSColor::withComponents(255, 0, 16)->description(), "#ff0010");
  EXPECT_EQ(NSColor::withComponents(255, 0, 16, 1)->description(), "#ff001001");
  EXPECT_EQ(NSArray::withObjects({{}, NSNumber::withInteger(2)})->description(), "(<null>, 2)");
}

TEST(ArrayTest, NestsAsDeepAsALongChain) {
  const auto nested = [](int innermost) {
    Ref<NSArray> list = NSArray::withObjects({NSNumber::withInteger(innermost)});
    for (int level = 0; level < 100'000; ++level) list = NSArray::withObjects({list, NSNumber::withInteger(level)});
    return list;
  };
  const Ref<NSArray> one = nested(1), same = nested(1), other = nested(2);
  EXPECT_TRUE(one->isEqual(same.get()));
  EXPECT_FALSE(one->isEqual(other.get()));
  EXPECT_EQ(one->hash(), same->hash());
  EXPECT_NE(one->hash(), other->hash());
  EXPECT_EQ(one->stableHash(), same->stableHash());
  const std::string text = one->description();
  EXPECT_EQ(text.substr(99'998, 17), "(((1), 0), 1), 2)");
}

TEST(StringTest, KeepsAbsentAndEmptyApart) {
  EXPECT_NE(StringRef(), StringRef(""));
  EXPECT_EQ(StringRef(), StringRef(static_cast<const char*>(nullptr)));
  EXPECT_FALSE(equalTexts(StringRef(), StringRef()));
  EXPECT_TRUE(equalTexts("a", StringRef(std::string("a"))));
  EXPECT_EQ(StringRef().hash(), 0u);
  EXPECT_NE(StringRef("").hash(), 0u);
  EXPECT_EQ(StringRef(std::string_view("a\0b", 3)).view().size(), 3u);
}

TEST(PropertyKeyTest, IsOneRecordForOneTextOnEveryThread) {
  std::vector<PropertyKey> seen(8);
  std::vector<std::thread> threads;
  for (PropertyKey& key : seen) threads.emplace_back([&key] { key = PropertyKey("made.on.many.threads"); });
  for (std::thread& thread : threads) thread.join();
  for (PropertyKey key : seen) EXPECT_EQ(key, seen[0]);
  EXPECT_EQ(PropertyKey::withOrdinal(seen[0].ordinal()), seen[0]);
  EXPECT_FALSE(PropertyKey());
  EXPECT_NE(PropertyKey(""), PropertyKey());
}

TEST(PropertySetTest, DoesSetAlgebra) {
  std::vector<PropertyKey> keys;
  for (int key = 0; key < 300; ++key) keys.emplace_back("set." + std::to_string(key));
  const Ref<PropertySet> few = PropertySet::with({keys[0], keys[299]});
  const Ref<PropertySet> all = PropertySet::with(keys);
  EXPECT_TRUE(few->isSubsetOf(*all));
  EXPECT_FALSE(all->isSubsetOf(*few));
  EXPECT_EQ(all->keys(), keys);
  const Ref<PropertySet> rest = all->copy();
  rest->subtract(*few);
  EXPECT_EQ(rest->count(), 298u);
  rest->intersect(*few);
  EXPECT_TRUE(rest->isEmpty());
  EXPECT_TRUE(rest->isEqual(*PropertySet::make()));  // whatever room it has kept
  rest->unite(*few);
  EXPECT_TRUE(rest->isEqual(*few));
  EXPECT_FALSE(rest->contains(PropertyKey()));
}

TEST(PropertyMapTest, AgreesWithASlowModelInContentsAndOrder) {
  std::mt19937 random(11);
  std::vector<PropertyKey> keys;
  for (int key = 0; key < 60; ++key) keys.emplace_back("map." + std::to_string(key));
  Ref<PropertyMap> map = PropertyMap::make();
  std::vector<std::pair<PropertyKey, std::int64_t>> model;
  for (int step = 0; step < 40'000; ++step) {
    const std::size_t span = step / 8'000 % 2 == 0 ? 60 : 5;
    const PropertyKey key = keys[random() % span];
    const auto found = std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == key; });
    const unsigned what = random() % 6;
    if (what < 2) {
      EXPECT_EQ(map->remove(key) != nullptr, found != model.end());
      if (found != model.end()) model.erase(found);
    } else if (what > 2) {
      map->set(key, NSNumber::withInteger(step));
      found != model.end() ? void(found->second = step) : void(model.emplace_back(key, step));
    } else if (step % 50 == 0) {
      const auto odd = [](std::int64_t value) { return value % 2 != 0; };
      map->removeIf([&](const auto& entry) { return odd(NSNumber::from(entry.value.get())->integerValue()); });
      std::erase_if(model, [&](const auto& entry) { return odd(entry.second); });
    }
    if (step % 97 == 0) map = map->copy(random() % 20);
    ASSERT_EQ(map->count(), model.size());
    if (step % 53 != 0) continue;
    for (std::size_t place = 0; place < model.size(); ++place) {
      ASSERT_EQ(map->at(place).key, model[place].first);
      ASSERT_EQ(NSNumber::from(map->find(model[place].first))->integerValue(), model[place].second);
    }
  }
}

TEST(PropertyMapTest, ComparesAndHashesWithoutRegardToOrder) {
  const PropertyKey a("a"), b("b"), c("c");
  const auto number = [](int value) { return NSNumber::withInteger(value); };
  const Ref<PropertyMap> map = PropertyMap::with({{a, number(1)}, {b, number(2)}});
  const Ref<PropertyMap> turned = PropertyMap::with({{b, number(2)}, {a, number(1)}});
  EXPECT_TRUE(map->isEqual(*turned));
  EXPECT_EQ(map->hash(), turned->hash());
  EXPECT_FALSE(map->isEqual(*PropertyMap::with({{a, number(2)}, {b, number(1)}})));
  EXPECT_FALSE(map->isEqual(*PropertyMap::with({{a, number(1)}})));
  map->addEntriesFrom(*map);
  EXPECT_EQ(map->find(PropertyKey()), nullptr);
  EXPECT_THROW(map->set(PropertyKey(), number(1)), NSInvalidArgumentException);
  EXPECT_THROW(map->set(a, {}), NSInvalidArgumentException);
  EXPECT_EQ(describe(*map), "{a = 1; b = 2; }");

  // Sizes 1, 2, 3 ... in three properties at once must not fall together.
  std::unordered_set<std::size_t> hashes;
  for (int n = 0; n < 8000; ++n) {
    hashes.insert(PropertyMap::with({{a, number(n % 20)}, {b, number(n / 20 % 20)}, {c, number(n / 400)}})->hash());
  }
  EXPECT_EQ(hashes.size(), 8000u);
}

TEST(ObjectTest, ReleasesLongChainsInALoop) {
  Ref<NSObject> chain = NSNumber::withInteger(0);
  for (int link = 0; link < 1'000'000; ++link) chain = NSArray::withObjects({chain});
  chain.reset();
  EXPECT_TRUE(NSArray::arrayClass().isKindOf(NSObject::nsObjectClass()));
  EXPECT_EQ(ZTClass::named("NSArray"), &NSArray::arrayClass());
  EXPECT_EQ(ZTClass::named("no such class"), nullptr);
}

TEST(ObjectTest, ReleasesTreesWithoutMemory) {
  // Each list lets go of many, far deeper than destructions nest.
  Ref<NSObject> tree = NSString::make("leaf");
  for (int level = 0; level < 2'000; ++level) {
    std::vector<Ref<NSObject>> children{tree};
    for (int child = 0; child < 3; ++child)
      children.push_back(NSArray::withObjects({NSArray::withObjects({NSString::make("leaf")})}));
    tree = NSArray::withObjects(std::move(children));
  }
  const std::int64_t before = test::liveAllocations();
  {
    const test::FailingAllocations none;
    tree.reset();
  }
  EXPECT_LT(test::liveAllocations(), before - 2'000 * 10);
}

}  // namespace
}  // namespace zt
