// SPDX-License-Identifier: MIT

// Deriving styles, deep copies and the array conveniences.

#include <tests/ztstyles/Archives.h>

#include <platform/NSException.h>
#include <ztstyles/ZTSAdditions.h>
#include <ztstyles/ZTSDerivingStyle.h>

#include <list>

namespace zt::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// `size` is stored; `weight` is derived: ten times the size.
class TenfoldStyle : public ZTSStyleOf<TenfoldStyle, ZTSDerivingStyle> {
 public:
  static constexpr const char* kClassName = "TenfoldStyle";
  static Ref<const PropertySet> classKeys() { return sceneKeys(); }
  bool validateValueForProperty(NSObject* value, PropertyKey key) const override {
    return key != weight && acceptsValue(value);
  }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{list};
    return keys;
  }
  bool isDerivedProperty(PropertyKey key) const override { return key == weight; }
  bool isSourceProperty(PropertyKey key) const override { return key == size; }
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override { return key == weight ? size : key; }
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override { return tenfold(valueForProperty(size).get()); }
  void removeDerivedValueForProperty(PropertyKey) override { removeValueForProperty(size); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    const Ref<NSObject> derived = map.remove(weight);
    const NSNumber* number = NSNumber::from(derived.get());
    if (derived)
      map.set(size, number != nullptr ? Ref<NSObject>(NSNumber::withInteger(number->integerValue() / 10)) : derived);
  }
  void convertToDerivedPropertyMap(PropertyMap* map) const override {
    if (map == nullptr) return;
    if (NSObject* source = map->find(size)) map->set(weight, isNull(source) ? Ref<NSObject>(source) : tenfold(source));
  }

 private:
  static Ref<NSObject> tenfold(NSObject* value) {
    const NSNumber* number = NSNumber::from(value);
    return number != nullptr ? Ref<NSObject>(NSNumber::withInteger(number->integerValue() * 10)) : Ref<NSObject>();
  }
};

std::string stored(const ZTSStyle& style) {
  const Ref<const PropertyMap> map = style.ZTSStyle::overridePropertyMap();
  return map ? describe(*map) : "none";
}

TEST(DerivingStyleTest, StoresSourcesAndShowsBoth) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TenfoldStyle& style = scene.style<TenfoldStyle>("d", {}, {{weight, 30}, {list, r}, {colour, 1}});
  EXPECT_THAT(stored(style), AllOf(HasSubstr("size = 3"), Not(HasSubstr("weight"))));
  EXPECT_EQ(r.observers().countForObject(&style), 1u);
  EXPECT_TRUE(style.overridesProperty(weight));
  EXPECT_TRUE(style.overridePropertyMap()->contains(weight));
  EXPECT_EQ(style.truePropertyMapFromPropertyMap(style.ZTSStyle::overridePropertyMap()),
            style.ZTSStyle::overridePropertyMap());
}

TEST(DerivingStyleTest, InheritsWhatItsSourcesInherit) {
  Scene scene;
  scene.style<TenfoldStyle>("d", {}, {{weight, 30}});
  const TenfoldStyle& child = scene.style<TenfoldStyle>({}, "d");
  EXPECT_EQ(child.overrideValueForProperty(weight), nullptr);
  EXPECT_EQ(child.overridePropertyMap(), nullptr);
  EXPECT_TRUE(child.definesProperty(weight));
  EXPECT_EQ(valueOf(child, weight), 30);
  EXPECT_EQ(NSNumber::from(child.propertyMap()->find(weight))->integerValue(), 30);
}

TEST(DerivingStyleTest, SettingADerivedPropertySetsItsSourceUndoably) {
  Scene scene;
  TenfoldStyle& style = scene.style<TenfoldStyle>("d");
  style.setValueForProperty(Value(70), weight);
  EXPECT_EQ(stored(style), "{size = 7; }");
  EXPECT_EQ(NSNumber::from(style.overrideValueForProperty(weight).get())->integerValue(), 70);
  style.setValueForProperty({}, weight);
  EXPECT_EQ(style.valueForProperty(weight), nullptr);
  for (const char* before : {"{size = 7; }", "none"}) {
    scene.undo();
    EXPECT_EQ(stored(style), before);
  }
  style.lockedStyleSetValuesForProperties(*mapOf({{weight, 20}}), 0);
  EXPECT_EQ(stored(style), "{size = 2; }");
}

TEST(DerivingStyleTest, ReportsADerivedPropertyThatIsStored) {
  Scene scene;
  ZTUAssertionRecorder reports;
  TenfoldStyle& style = scene.style<TenfoldStyle>("d", {}, {{weight, 30}});
  style.validate();
  EXPECT_THAT(reports.reports(), IsEmpty());
  style.p_setValueForProperty(NSNumber::withInteger(1), weight);
  style.validate();
  EXPECT_THAT(reports.descriptions(), ElementsAre("Found derived property weight in property map."));
}

/// Shows a derived reference: `label` is what `list` is, under another key.
class AliasStyle : public ZTSStyleOf<AliasStyle, ZTSDerivingStyle> {
 public:
  static constexpr const char* kClassName = "AliasStyle";
  static Ref<const PropertySet> classKeys() { return TenfoldStyle::classKeys(); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{label};
    return keys;
  }
  bool isDerivedProperty(PropertyKey key) const override { return key == label; }
  bool isSourceProperty(PropertyKey key) const override { return key == list; }
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override { return key == label ? list : key; }
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override { return valueForProperty(list); }
  void removeDerivedValueForProperty(PropertyKey) override { removeValueForProperty(list); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    if (const Ref<NSObject> value = map.remove(label)) map.set(list, value);
  }
  void convertToDerivedPropertyMap(PropertyMap* map) const override {
    if (NSObject* value = map != nullptr ? map->find(list) : nullptr) map->set(label, Ref<NSObject>(value));
  }
};

TEST(DerivingStyleTest, FollowsAReferenceThatStandsUnderAnotherKey) {
  Scene scene;
  TestStyle& r1 = scene.style("r1");
  TestStyle& r2 = scene.style("r2");
  AliasStyle& d = scene.style<AliasStyle>("d", {}, {{label, r1}});
  d.incrementUsageCount();
  const auto uses = [&](ZTSStyle& r) { return std::pair(r.usageCount(), r.observers().count()); };
  EXPECT_EQ(uses(r1), std::pair(1u, std::size_t{1}));
  d.setValueForProperty(Value(r2), list);
  EXPECT_EQ(uses(r1), std::pair(0u, std::size_t{0}));
  EXPECT_EQ(uses(r2), std::pair(1u, std::size_t{1}));
  scene.undo();
  scene.sheet->removeStyle(Ref<ZTSStyle>(&d));
  for (TestStyle* r : {&r1, &r2}) EXPECT_EQ(uses(*r), std::pair(0u, std::size_t{0}));
  scene.host.undo->removeAllActions();
  r1.setValueForProperty(Value(3), size);
}

/// `weight` is derived from `size`, many to one: its tens.
class TensStyle : public ZTSStyleOf<TensStyle, TenfoldStyle> {
 public:
  static constexpr const char* kClassName = "TensStyle";
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override { return tens(valueForProperty(size).get()); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    const Ref<NSObject> derived = map.remove(weight);
    if (const NSNumber* number = NSNumber::from(derived.get()))
      map.set(size, NSNumber::withInteger(number->integerValue() * 10));
  }
  void convertToDerivedPropertyMap(PropertyMap* map) const override {
    if (NSObject* source = map != nullptr ? map->find(size) : nullptr) map->set(weight, tens(source));
  }

 private:
  static Ref<NSObject> tens(NSObject* value) {
    const NSNumber* number = NSNumber::from(value);
    return number != nullptr ? Ref<NSObject>(NSNumber::withInteger(number->integerValue() / 10)) : Ref<NSObject>();
  }
};

TEST(DerivingStyleTest, CollapsesAndVariesBySourcesAlone) {
  Scene scene;
  scene.style<TensStyle>("body", {}, {{size, 52}, {colour, 1}});
  TensStyle& child = scene.style<TensStyle>("child", "body", {{size, 57}, {colour, 1}});
  child.collapseOverriddenPropertyValues();
  EXPECT_EQ(stored(child), "{size = 57; }");

  const Ref<ZTSStyle> asked = scene.sheet->variationOfStyle(&child, {.propertyMap = mapOf({{size, 12}}).get()});
  EXPECT_EQ(valueOf(*asked, size), 12);
  EXPECT_EQ(asked, scene.sheet->variationOfStyle(&child, {.propertyMap = mapOf({{size, 12}}).get()}));
}

TEST(DerivingStyleTest, ClearsInOneStepWhateverAnObserverDoes) {
  struct Remover : ZTSStyleObserver {
    void stylePropertiesChanged(const ZTSStyleChangeInfo&) override {
      ++told;
      if (auto action = std::exchange(then, nullptr)) action();
    }
    int told = 0;
    std::function<void()> then;
  };
  Scene scene;
  TenfoldStyle& style = scene.style<TenfoldStyle>("d", {}, {{size, 3}, {colour, 1}});
  const Ref<TenfoldStyle> held(&style);
  Remover remover;
  style.addObserver(&remover);
  scene.host.undo->removeAllActions();
  remover.then = [&] { scene.sheet->removeStyle(held); };
  style.clearOverriddenPropertyValues();
  EXPECT_EQ(stored(style), "none");
  EXPECT_EQ(remover.told, 1);
  while (scene.host.undo->canUndo()) scene.undo();
  EXPECT_THAT(stored(style), AllOf(HasSubstr("size = 3"), HasSubstr("colour = 1")));
}

TEST(DerivingStyleTest, RemovesSourcesButNotBehindALock) {
  Scene scene;
  ZTUAssertionRecorder reports;
  TenfoldStyle& style = scene.style<TenfoldStyle>("d", {}, {{size, 3}, {colour, 1}});
  const Ref<PropertySet> keys = PropertySet::with({weight, colour});
  style.lockedStyleRemoveValuesForProperties(*keys, 0);
  EXPECT_EQ(stored(style), "{size = 3; }");
  EXPECT_THAT(reports.descriptions(), ElementsAre("Can't remove the value of a derived property weight."));
  style.setValueForProperty(Value(1), colour);
  style.removeValuesForProperties(*keys);
  EXPECT_EQ(stored(style), "none");
  EXPECT_EQ(keys->count(), 2u);

  const Ref<ZTSStyle> withoutHooks = ZTSDerivingStyle::styleClass().makeStyle();
  withoutHooks->p_setValueForProperty(NSNumber::withInteger(3), size);
  EXPECT_EQ(valueOf(*withoutHooks, size), 3);
  EXPECT_FALSE(withoutHooks->overridesProperty(size));
  EXPECT_FALSE(withoutHooks->definesProperty(size));
  EXPECT_EQ(withoutHooks->overridePropertyMap(), withoutHooks->ZTSStyle::overridePropertyMap());
}

TEST(DerivingStyleTest, ConvertsADerivedPropertyThatAnArchiveHolds) {
  TenfoldStyle::styleClass();
  const Loaded loaded(sheetOf(element("zt:ident='d' zt:id='1'",
                                      "<zt:weight><zt:integer>30</zt:integer></zt:weight>"
                                      "<zt:list><zt:ref zt:to='1'/></zt:list>",
                                      "TenfoldStyle")));
  ZTSStyle& style = loaded["d"];
  EXPECT_EQ(style.rawValueForProperty(weight), nullptr);
  EXPECT_EQ(NSNumber::from(style.rawValueForProperty(size))->integerValue(), 3);
  EXPECT_EQ(style.rawValueForProperty(list), &style);
  EXPECT_THAT(loaded.logs,
              ElementsAre("10 Converted derived property weight of " + style.shortDescription() + " on reading."));
  EXPECT_THAT(reportsOf(*loaded.sheet), IsEmpty());
}

TEST(DerivingStyleTest, FindsTheSameVariationAgain) {
  Scene scene;
  TenfoldStyle& base = scene.style<TenfoldStyle>("d", {}, {{size, 3}, {colour, 1}});
  const auto vary = [&](ZTSStyle& style, const Ref<PropertyMap>& map) {
    return scene.sheet->variationOfStyle(&style, {.propertyMap = map.get()});
  };
  const Ref<ZTSStyle> first = vary(base, mapOf({{weight, 50}}));
  EXPECT_EQ(stored(*first), "{size = 5; }");
  for (const auto& map : {mapOf({{weight, 50}}), mapOf({{size, 5}}), mapOf({{weight, 50}, {colour, 1}})}) {
    EXPECT_EQ(vary(base, map), first);
    EXPECT_EQ(vary(*first, map), first);
  }
  EXPECT_EQ(vary(*first, mapOf({{weight, 30}})), &base);
}

// ---- Deep copies

ZTSAggregateStyle& aggregate(ZTSStyle* style) { return static_cast<ZTSAggregateStyle&>(*style); }

TEST(DeepCopyTest, LinksTheCopiesAmongThemselves) {
  Scene scene;
  TestStyle& c = scene.style("c", {}, {{size, 1}});
  TestAggregate& b = scene.style<TestAggregate>("b", {}, {{list, c}});
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, b}});
  a.setValueForProperty(Value(a), label);
  const std::size_t before = scene.host.undo->undoGroupCount();
  for (const auto& given : {std::vector<Ref<ZTSStyle>>{&a}, {&a, &b}, {&b, &a}, {&c, &b, &a}}) {
    const ZTSStyleCopies copies = ZTSAggregateStyle::deepCopyStyles(given);
    ASSERT_EQ(copies.count(), given.size());
    std::vector<ZTSStyle*> byIdentifier(3);
    for (ZTSStyle* copy : copies) byIdentifier[static_cast<std::size_t>(copy->identifier().text()[0] - 'a')] = copy;
    const Ref<ZTSStyle> copyOfB = aggregate(byIdentifier[0]).p_referencedStyleForProperty(list);
    const Ref<ZTSStyle> copyOfC = aggregate(copyOfB.get()).p_referencedStyleForProperty(list);
    EXPECT_EQ(aggregate(byIdentifier[0]).p_referencedStyleForProperty(label), byIdentifier[0]);
    EXPECT_NE(copyOfB, &b);
    EXPECT_NE(copyOfC, &c);
    EXPECT_EQ(valueOf(*copyOfC, size), 1);
    if (byIdentifier[1] != nullptr) {
      EXPECT_EQ(copyOfB, byIdentifier[1]);
    }
    if (byIdentifier[2] != nullptr) {
      EXPECT_EQ(copyOfC, byIdentifier[2]);
    }
  }
  EXPECT_EQ(b.observers().count() + c.observers().count(), 2u);
  EXPECT_EQ(scene.host.undo->undoGroupCount(), before);

  ZTUAssertionRecorder reports;
  const Ref<ZTSStyleMap> map = make<ZTSStyleMap>();
  map->setObjectForKey(Ref<ZTSStyle>(&c), Ref<ZTSStyle>(&a));
  a.replaceReferencedStylesUsingStyleMap(*map);
  EXPECT_EQ(a.valueForProperty(label), &c);
  EXPECT_EQ(a.overrideValueForProperty(list), NSNull::null());
  EXPECT_THAT(reports.descriptions(),
              ElementsAre(format("Failed to find mapped style for original style <%p>.", address(&b))));
  a.didReplaceStyleWithStyle(&c, nullptr);
  a.didReplaceStyleWithStyle(nullptr, &b);
  EXPECT_EQ(a.valueForProperty(label), &c);
}

TEST(DeepCopyTest, CopiesEveryStyleOfALongChainInLinearTime) {
  std::vector<Ref<ZTSStyle>> chain{make<TestAggregate>()};
  while (chain.size() < 20'000) {
    const Ref<PropertyMap> map = mapOf({{list, *chain.back()}});
    chain.push_back(make<TestAggregate>({.overridePropertyMap = map.get()}));
  }
  const ZTSStyleCopies copies = ZTSAggregateStyle::deepCopyStyles({chain.rbegin(), chain.rend()});
  ASSERT_EQ(copies.count(), chain.size());
  const std::vector<ZTSStyle*> all = copies.styles().allObjects();
  for (std::size_t i = 0; i + 1 < all.size(); ++i)
    ASSERT_EQ(aggregate(all[i]).p_referencedStyleForProperty(list), all[i + 1]);
  EXPECT_FALSE(aggregate(all[0]).overridesAnyNonReferencedStylePropertyIgnoringStyles({}));
}

TEST(DeepCopyTest, TellsWhetherAnythingButReferencesIsOverridden) {
  Scene scene;
  TestStyle& plain = scene.style("plain", {}, {{size, 1}});
  TestStyle& empty = scene.style("empty");
  TestAggregate& inner = scene.style<TestAggregate>("inner", {}, {{list, plain}});
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, inner}, {label, empty}});
  ZTUMutablePointerSet<ZTSStyle> ignored;
  EXPECT_FALSE(a.overridesAnyNonReferencedStyleProperty());
  EXPECT_TRUE(a.overridesAnyNonReferencedStylePropertyIgnoringStyles(ignored));
  ignored.addObject(&plain);
  inner.setValueForProperty(Value(a), label);  // a cycle ends
  EXPECT_FALSE(a.overridesAnyNonReferencedStylePropertyIgnoringStyles(ignored));
  EXPECT_EQ(ignored.count(), 1u);
  a.setValueForProperty({}, label);
  EXPECT_TRUE(a.overridesAnyNonReferencedStyleProperty());
}

// ---- Array conveniences

/// Inspectable without being a style.
struct Proxy {
  bool canMutateProperty(PropertyKey) const { return !isFixed; }
  void setValueForProperty(const Ref<NSObject>& value, PropertyKey) { calls.push_back(format("set %@", value)); }
  void setValueForPropertyWithScope(const Ref<NSObject>& value, PropertyKey, NSObject* scope) {
    calls.push_back(format("set %@ in %@", value, scope));
  }
  void setValuesForProperties(const PropertyMap& values) { calls.push_back(describe(values)); }
  bool isFixed = false;
  Log calls = {};
};

struct CopiedValue : NSObject {
  Ref<NSObject> copy() const override { return NSNumber::withInteger(++copies); }
  std::string description() const override { return "original"; }
  static inline int copies = 0;
};

TEST(AdditionsTest, ChangeEveryElementThatCanBeChanged) {
  std::list<Proxy> proxies(4);
  std::next(proxies.begin())->isFixed = true;
  const Ref<NSObject> value = make<CopiedValue>();
  makeObjectsSetValueForProperty(proxies, value, size);
  makeObjectsSetCopiedValueForProperty(proxies, value, size);
  const std::vector<Ref<NSObject>> scopes{NSNull::null(), NSString::make("skipped"), NSString::make("scope")};
  makeObjectsSetValueForPropertyWithScopes(proxies, value, size, scopes);
  setValuesForProperties(proxies, *mapOf({{size, 1}}));
  std::vector<Log> logs;
  for (const Proxy& proxy : proxies) logs.push_back(proxy.calls);
  const auto changed = [](const char* copy, const char* scope) {
    return Log{"set original", std::string("set ") + copy, std::string("set original in ") + scope, "{size = 1; }"};
  };
  EXPECT_THAT(logs,
              ElementsAre(changed("1", "(null)"), Log{"{size = 1; }"}, changed("2", "scope"), changed("3", "(null)")));

  Scene scene;
  TestStyle& open = scene.style("open");
  TestStyle& locked = scene.style("locked", {}, {}, true);
  makeObjectsSetValueForProperty(std::vector<ZTSStyle*>{&open, nullptr, &locked}, NSNumber::withInteger(5), size);
  EXPECT_EQ(valueOf(open, size), 5);
  EXPECT_EQ(valueOf(locked, size), -1);
  setValuesForProperties(scene.sheet->retainedStyles(), *mapOf({{size, 6}}));
  EXPECT_EQ(valueOf(locked, size), 6);
}

}  // namespace
}  // namespace zt::testing
