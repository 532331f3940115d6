// The cascade: effective values, flattened maps, inspector queries, and chains of any length.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

TEST(LookupTest, NearestSetterWinsAndTheSentinelHides) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}, {weight, 4}});
  TestStyle& middle = scene.style("middle", "root", {{size, 2}});
  TestStyle& leaf = scene.style("leaf", "middle", {{weight, NSNull::null()}});
  EXPECT_TRUE(valueOf(leaf, size) == 2 && valueOf(root, size) == 1);
  EXPECT_EQ(leaf.valueForProperty(weight), nullptr);
  EXPECT_TRUE(isNull(leaf.p_valueForProperty(weight)));
  EXPECT_TRUE(leaf.definesProperty(weight) && leaf.overridesProperty(weight) && leaf.definesProperty(size));
  EXPECT_FALSE(leaf.overridesProperty(size) || leaf.definesProperty(colour));
  EXPECT_FALSE(leaf.valuesForProperty(weight).has_value());
  EXPECT_EQ(leaf.valueForProperty(PropertyKey()), nullptr);
  EXPECT_TRUE(leaf.propertyMap()->isEqual(*mapOf({{size, 2}, {weight, NSNull::null()}})));
  EXPECT_EQ(middle.overridePropertyMap(), middle.overridePropertyMap());  // the live map itself

  TestStyle& plain = scene.style("plain", "middle");
  EXPECT_TRUE(plain.overridePropertyMap() == nullptr && plain.propertyMap()->isEqual(*middle.propertyMap()));
  plain.propertyMap()->set(size, NSNumber::withInteger(99));
  EXPECT_EQ(valueOf(middle, size), 2);
  EXPECT_EQ(scene.style("bare").propertyMap(), nullptr);
}

TEST(LookupTest, AnswersAnInspector) {
  Scene scene;
  TestStyle& style = scene.style("a", {}, {{size, 1}});
  EXPECT_TRUE(style.canInspectProperty(size) && style.canMutateProperty(weight));
  EXPECT_FALSE(style.canInspectProperty("nonsense"));
  style.setIsLocked(true);
  EXPECT_TRUE(style.canInspectProperty(size) && style.mutableProperties() == nullptr);
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
