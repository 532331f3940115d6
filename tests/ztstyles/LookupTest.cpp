// SPDX-License-Identifier: MIT

// The cascade: effective values, flattened maps, inspector queries, and chains of any length.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

/// A root, a style that sets something anew, and one that sets something to explicitly no value.
struct Chain {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}, {weight, 4}});
  TestStyle& middle = scene.style("middle", "root", {{size, 2}});
  TestStyle& leaf = scene.style("leaf", "middle", {{weight, NSNull::null()}});
};

TEST(LookupTest, NearestSetterWins) {
  const Chain chain;
  EXPECT_EQ(valueOf(chain.root, size), 1);
  EXPECT_EQ(valueOf(chain.middle, size), 2);
  EXPECT_EQ(valueOf(chain.leaf, size), 2);
  EXPECT_EQ(valueOf(chain.middle, weight), 4);
  EXPECT_EQ(chain.leaf.valueForProperty(colour), nullptr);
  EXPECT_EQ(chain.leaf.valueForProperty(PropertyKey()), nullptr);
}

TEST(LookupTest, TheSentinelHidesWhatIsAbove) {
  const Chain chain;
  EXPECT_EQ(chain.leaf.valueForProperty(weight), nullptr);
  EXPECT_TRUE(isNull(chain.leaf.p_valueForProperty(weight)));
  EXPECT_FALSE(chain.leaf.valuesForProperty(weight).has_value());
  EXPECT_TRUE(chain.leaf.overridesProperty(weight)) << "it is an entry as any other";
  EXPECT_TRUE(chain.leaf.propertyMap()->isEqual(*mapOf({{size, 2}, {weight, NSNull::null()}})));
}

TEST(LookupTest, TellsOwnEntriesFromInheritedOnes) {
  const Chain chain;
  EXPECT_TRUE(chain.leaf.definesProperty(size));
  EXPECT_FALSE(chain.leaf.overridesProperty(size));
  EXPECT_TRUE(chain.leaf.definesProperty(weight));
  EXPECT_FALSE(chain.leaf.definesProperty(colour));
}

TEST(LookupTest, AFlattenedMapIsTheCallersAndTheOwnMapIsTheStyles) {
  Chain chain;
  EXPECT_EQ(chain.middle.overridePropertyMap(), chain.middle.overridePropertyMap());
  TestStyle& plain = chain.scene.style("plain", "middle");
  EXPECT_EQ(plain.overridePropertyMap(), nullptr);
  EXPECT_TRUE(plain.propertyMap()->isEqual(*chain.middle.propertyMap()));
  plain.propertyMap()->set(size, NSNumber::withInteger(99));
  EXPECT_EQ(valueOf(chain.middle, size), 2);
  EXPECT_EQ(chain.scene.style("bare").propertyMap(), nullptr);
}

TEST(LookupTest, AnswersAnInspector) {
  Scene scene;
  TestStyle& style = scene.style("a", {}, {{size, 1}});
  EXPECT_TRUE(style.canInspectProperty(size));
  EXPECT_TRUE(style.canMutateProperty(weight));
  EXPECT_FALSE(style.canInspectProperty("nonsense"));
  style.setIsLocked(true);
  EXPECT_TRUE(style.canInspectProperty(size));
  EXPECT_EQ(style.mutableProperties(), nullptr);
  EXPECT_FALSE(style.canMutateProperty(size));
  const auto values = style.valuesForPropertiesWithScope(*PropertySet::with({size, weight}), nullptr);
  ASSERT_EQ(values.size(), 1u);
  EXPECT_EQ(values[0].first, size);
  const Ref<PropertyMap> mixed =
      style.isStateMixedForPropertiesWithScope(*PropertySet::with({size, "nonsense"}), nullptr);
  EXPECT_EQ(mixed->count(), 2u);
  EXPECT_TRUE(mixed->find("nonsense")->isEqual(NSNumber::withBool(false).get()));
}

/// Overrides every reading operation and calls the inherited one.
struct Reader : ZTSStyleOf<Reader, TestStyle> {
  static constexpr const char* kClassName = "Reader";
  Ref<NSObject> valueForProperty(PropertyKey key) const override {
    Ref<NSObject> value = ZTSStyle::valueForProperty(key);
    return value ? value : Ref<NSObject>(NSNumber::withInteger(42));
  }
  bool definesProperty(PropertyKey key) const override { return key == colour || ZTSStyle::definesProperty(key); }
  Ref<PropertyMap> propertyMap() const override {
    Ref<PropertyMap> map = ZTSStyle::propertyMap();
    if (!map) map = PropertyMap::make();
    map->set(colour, NSNumber::withInteger(7));
    return map;
  }
};

TEST(LookupTest, AsksEveryClassThatOverrides) {
  Scene scene;
  scene.style("root", {}, {{size, 1}});
  scene.style<Reader>("reader", "root");
  scene.style("between", "reader");
  TestStyle& leaf = scene.style("leaf", "between");
  EXPECT_EQ(valueOf(leaf, weight), 42);
  EXPECT_EQ(valueOf(leaf, size), 1);
  EXPECT_TRUE(leaf.definesProperty(colour));
  EXPECT_EQ(leaf.propertyMap()->count(), 2u);
}

TEST(LookupTest, LongChainsAreWalkedInALoopOrEndInAnException) {
  Scene plain, overriding;
  // Far beyond what recursion would survive in a sanitizer build, also when it is released.
  TestStyle& last = *plain.chain(300'000).back();
  EXPECT_EQ(valueOf(last, size), 0);
  EXPECT_EQ(last.propertyMap()->count(), 2u);
  last.incrementUsageCount();
  EXPECT_EQ(plain.sheet->styleWithIdentifier("0")->usageCount(), 1u);

  Reader& deep = *overriding.chain<Reader>(30'000).back();
  EXPECT_THROW(deep.valueForProperty(size), NSInternalInconsistencyException);
  EXPECT_THROW(deep.propertyMap(), NSInternalInconsistencyException);
  EXPECT_EQ(valueOf(*overriding.sheet->styleWithIdentifier("100"), colour), 42);
}

}  // namespace
}  // namespace zt::testing
