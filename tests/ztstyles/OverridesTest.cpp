// SPDX-License-Identifier: MIT

// Minimal override maps, collapsing, comparing and replacing.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

using Entries = std::initializer_list<std::pair<PropertyKey, Value>>;

TEST(OverridesTest, KeepsWhatDiffersFromTheBase) {
  Scene scene;
  TestStyle& base = scene.style("base", {}, {{size, 10}, {weight, NSNull::null()}});
  TestStyle& mine = scene.style({}, "base", {{size, 10}, {colour, 3}});
  struct Case {
    ZTSStyle& style;
    Entries wanted, overrides;
    bool canCollapse;
    Entries expected;
  };
  const Case cases[] = {
      {base, {{size, 10.0}}, {}, true, {}},                    // what the base gives, and equal as a number
      {base, {{size, 10}}, {{size, 10}}, true, {{size, 10}}},  // overrides stay
      {base, {{size, 9}}, {{size, 8}}, true, {{size, 8}}},     // and win
      {base, {{size, NSNull::null()}, {colour, NSNull::null()}}, {}, true, {{size, NSNull::null()}}},
      {base, {{weight, NSNull::null()}}, {}, true, {}},  // explicitly none on the base is none
      {mine, {}, {}, true, {{colour, 3}}},
      {mine, {}, {}, false, {{size, 10}, {colour, 3}}},
      {mine, {{colour, 4}}, {}, true, {{colour, 4}}},
      {mine, {{colour, 4}}, {}, false, {{size, 10}, {colour, 3}}},  // own entries are fixed, so they win
      {mine, {{size, 11}, {weight, 1}}, {{colour, 5}}, true, {{size, 11}, {colour, 5}, {weight, 1}}},
      {mine, {{colour, NSNull::null()}}, {}, true, {}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(&each - cases);
    const Ref<PropertyMap> wanted = mapOf(each.wanted), overrides = mapOf(each.overrides);
    const Ref<PropertyMap> result =
        each.style.overridePropertyMapWithPropertyMap(wanted.get(), overrides.get(), each.canCollapse);
    EXPECT_TRUE(result->isEqual(*mapOf(each.expected))) << describe(*result);
  }
  ZTUAssertionRecorder reports;
  const Ref<TestStyle> alone = make<TestStyle>();
  const Ref<PropertyMap> wanted = mapOf({{size, 1}, {weight, NSNull::null()}});
  EXPECT_EQ(alone->overridePropertyMapWithPropertyMap(wanted.get(), nullptr, true)->count(), 1u);
  EXPECT_EQ(reports.descriptions(),
            Log{format("Cannot create variation of anonymous style <%p> with no parent.", address(alone.get()))});
}

TEST(OverridesTest, CollapsesAndClearsInOneUndoableStep) {
  Scene scene;
  scene.style("base", {}, {{size, 10}});
  TestStyle& style = scene.style("a", "base", {{size, 10}, {weight, NSNull::null()}, {colour, 1}});
  TestStyle& locked = scene.style("b", "base", {{size, 10}}, true);
  TestStyle& root = scene.style("c", {}, {{size, 10}});
  for (TestStyle* each : {&locked, &root}) each->collapseOverriddenPropertyValues();
  locked.clearOverriddenPropertyValues();
  EXPECT_FALSE(scene.host.undo->canUndo());
  EXPECT_TRUE(locked.overridesProperty(size));
  EXPECT_TRUE(root.overridesProperty(size));
  for (int twice = 0; twice < 2; ++twice) {
    style.collapseOverriddenPropertyValues();
    EXPECT_EQ(style.overridePropertyMap()->count(), 1u);
    EXPECT_EQ(scene.host.undo->undoGroupCount(), 1u);
  }
  for (int twice = 0; twice < 2; ++twice) style.clearOverriddenPropertyValues();
  EXPECT_EQ(style.overridePropertyMap(), nullptr);
  for (int twice = 0; twice < 2; ++twice) scene.undo();
  EXPECT_EQ(style.overridePropertyMap()->count(), 3u);
}

class OtherRegistry : public TestStyle {
  const PropertySet& inspectableProperties() const override {
    static const Ref<PropertySet> keys = PropertySet::with({size, "else"});
    return *keys;
  }
};

TEST(OverridesTest, TellsInWhichPropertiesTwoStylesDiffer) {
  Scene scene;
  scene.style("base", {}, {{size, 10}});
  TestStyle& a = scene.style("a", "base", {{weight, 1}});
  TestStyle& b = scene.style("b", {}, {{size, 10.0}, {weight, 1}});
  EXPECT_EQ(a.compareProperties(b), nullptr);
  b.setValueForProperty(Value(2), weight);
  EXPECT_TRUE(a.compareProperties(b)->isEqual(*PropertySet::with({weight})));
  const Ref<ZTSStyle> other(new OtherRegistry);
  other->setValueForProperty(Value(10), size);
  EXPECT_TRUE(a.compareProperties(*other)->isEqual(*PropertySet::with({weight, colour, list, label, "else"})));
}

TEST(OverridesTest, HandsChildrenAndReferencesOverToAReplacement) {
  Scene scene;
  TestStyle& old = scene.style("old");
  TestStyle& fresh = scene.style("fresh");
  TestStyle& child = scene.style({}, "old");
  TestAggregate& user = scene.style<TestAggregate>("user", {}, {{list, old}});
  for (ZTSStyle* unfit : {static_cast<ZTSStyle*>(nullptr), static_cast<ZTSStyle*>(&old), static_cast<ZTSStyle*>(&user)})
    old.replaceWithStyle(unfit);
  EXPECT_EQ(child.parent(), &old);
  old.replaceWithStyle(&fresh);
  EXPECT_EQ(child.parent(), &fresh);
  EXPECT_EQ(user.overrideValueForProperty(list), &fresh);
  EXPECT_EQ(old.observers().count(), 0u);
}

struct Clinging : ZTSStyleOf<Clinging, TestStyle> {
  static constexpr const char* kClassName = "Clinging";
  void setParentIdentifier(StringRef) override { throw NSGenericException("a child"); }
};
struct Mourner : ZTSStyleObserver {
  void didReplaceStyleWithStyle(ZTSStyle*, ZTSStyle*) override { throw NSGenericException("an observer"); }
};

TEST(OverridesTest, HandsOverWhatItCanWhoeverThrows) {
  Scene scene;
  TestStyle& old = scene.style("old");
  TestStyle& fresh = scene.style("fresh");
  Clinging& clinging = scene.style<Clinging>({}, "old");
  TestStyle& child = scene.style({}, "old");
  Mourner mourner;
  old.addObserver(&mourner);
  TestAggregate& user = scene.style<TestAggregate>("user", {}, {{list, old}});
  try {
    old.replaceWithStyle(&fresh);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.reason(), "a child");
  }
  EXPECT_EQ(clinging.parent(), &old);
  EXPECT_EQ(child.parent(), &fresh);
  EXPECT_EQ(user.overrideValueForProperty(list), &fresh);
  old.removeObserver(&mourner);
}

}  // namespace
}  // namespace zt::testing
