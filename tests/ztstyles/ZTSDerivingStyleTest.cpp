// Deriving styles, deep copies and the array conveniences.

#include <tests/ztstyles/Archives.h>

#include <platform/NSException.h>
#include <ztstyles/ZTSAdditions.h>
#include <ztstyles/ZTSDerivingStyle.h>

#include <list>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// `size` is stored; `weight` is derived: ten times the size.
class TenfoldStyle : public ZTSDerivingStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<TenfoldStyle>("TenfoldStyle", ZTSDerivingStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
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
  std::vector<PropertyKey> derivedPropertiesForProperty(PropertyKey key) const override {
    return key == size ? std::vector{weight} : std::vector<PropertyKey>();
  }
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override { return tenfold(valueForProperty(size).get()); }
  void removeDerivedValueForProperty(PropertyKey) override { removeValueForProperty(size); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    const Ref<NSObject> derived = map.remove(weight);
    if (const NSNumber* number = NSNumber::from(derived.get())) {
      map.set(size, NSNumber::withInteger(number->integerValue() / 10));
    } else if (derived) {
      map.set(size, derived);
    }
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
  ZTUAssertionRecorder reports;
  TestStyle& r = scene.style("r");
  TenfoldStyle& style = scene.style<TenfoldStyle>("d", {}, {{weight, 30}, {list, r}, {colour, 1}});
  const std::string madeFromDerived = stored(style);
  EXPECT_TRUE(madeFromDerived.find("size = 3") != std::string::npos &&
              madeFromDerived.find("weight") == std::string::npos);
  EXPECT_EQ(r.observers().countForObject(&style), 1u);
  EXPECT_EQ(valueOf(style, weight), 30);
  EXPECT_TRUE(style.overridesProperty(weight) && style.definesProperty(weight) &&
              style.overridePropertyMap()->contains(weight));

  TenfoldStyle& child = scene.style<TenfoldStyle>({}, "d");
  EXPECT_EQ(child.overrideValueForProperty(weight), nullptr);
  EXPECT_EQ(child.overridePropertyMap(), nullptr);
  EXPECT_EQ(valueOf(child, weight), 30);
  EXPECT_TRUE(child.definesProperty(weight));
  EXPECT_EQ(NSNumber::from(child.propertyMap()->find(weight))->integerValue(), 30);
  child.setValueForProperty(Value(70), weight);
  EXPECT_EQ(stored(child), "{size = 7; }");
  EXPECT_EQ(NSNumber::from(child.overrideValueForProperty(weight).get())->integerValue(), 70);
  child.setValueForProperty({}, weight);
  EXPECT_EQ(child.valueForProperty(weight), nullptr);
  scene.undo();
  EXPECT_EQ(stored(child), "{size = 7; }");
  scene.undo();
  EXPECT_EQ(stored(child), "none");
  child.lockedStyleSetValuesForProperties(*mapOf({{weight, 20}}), 0);
  EXPECT_EQ(stored(child), "{size = 2; }");
  EXPECT_EQ(child.truePropertyMapFromPropertyMap(child.ZTSStyle::overridePropertyMap()),
            child.ZTSStyle::overridePropertyMap());
  style.validate();
  EXPECT_THAT(reports.reports(), IsEmpty());

  child.p_setValueForProperty(NSNumber::withInteger(1), weight);
  child.validate();
  EXPECT_THAT(reports.descriptions(), ElementsAre("Found derived property weight in property map."));
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

TEST(DerivingStyleTest, BehavesLikeAnAggregateWithoutHooks) {
  Scene scene;
  const Ref<ZTSStyle> bare = ZTSDerivingStyle::styleClass().makeStyle();
  ASSERT_NE(bare, nullptr);
  bare->p_setValueForProperty(NSNumber::withInteger(3), size);
  EXPECT_EQ(valueOf(*bare, size), 3);
  EXPECT_FALSE(bare->overridesProperty(size) || bare->definesProperty(size));
  EXPECT_EQ(bare->overridePropertyMap(), bare->ZTSStyle::overridePropertyMap());
  EXPECT_TRUE(bare->propertyMap()->isEqual(*bare->overridePropertyMap()));
}

TEST(DerivingStyleTest, FindsTheSameVariationAgain) {
  Scene scene;
  TenfoldStyle& base = scene.style<TenfoldStyle>("d", {}, {{size, 3}, {colour, 1}});
  const Ref<PropertyMap> maps[] = {mapOf({{weight, 50}}), mapOf({{size, 5}}), mapOf({{weight, 50}, {colour, 1}})};
  const Ref<ZTSStyle> first = scene.sheet->variationOfStyle(&base, {.propertyMap = maps[0].get()});
  ASSERT_NE(first, &base);
  EXPECT_EQ(stored(*first), "{size = 5; }");
  for (const Ref<PropertyMap>& map : maps) {
    EXPECT_EQ(scene.sheet->variationOfStyle(&base, {.propertyMap = map.get()}), first);
    EXPECT_EQ(scene.sheet->variationOfStyle(first.get(), {.propertyMap = map.get()}), first);
  }
  const Ref<PropertyMap> back = mapOf({{weight, 30}});
  EXPECT_EQ(scene.sheet->variationOfStyle(first.get(), {.propertyMap = back.get()}), &base);
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
    const ZTSStyleSet copies = ZTSAggregateStyle::deepCopyStyles(given);
    ASSERT_EQ(copies.count(), given.size());
    std::vector<ZTSStyle*> byIdentifier(3);
    for (ZTSStyle* copy : copies) byIdentifier[static_cast<std::size_t>(copy->identifier().text()[0] - 'a')] = copy;
    const Ref<ZTSStyle> copyOfB = aggregate(byIdentifier[0]).p_referencedStyleForProperty(list);
    const Ref<ZTSStyle> copyOfC = aggregate(copyOfB.get()).p_referencedStyleForProperty(list);
    EXPECT_EQ(aggregate(byIdentifier[0]).p_referencedStyleForProperty(label), byIdentifier[0]);
    EXPECT_TRUE(copyOfB != &b && copyOfC != &c && valueOf(*copyOfC, size) == 1);
    EXPECT_TRUE(byIdentifier[1] == nullptr || copyOfB == byIdentifier[1]);
    EXPECT_TRUE(byIdentifier[2] == nullptr || copyOfC == byIdentifier[2]);
    byIdentifier[0]->p_setPropertyMap({});  // it held itself
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
  Scene scene;
  std::vector<Ref<ZTSStyle>> chain;
  for (int i = 0; i < 20'000; ++i) {
    chain.emplace_back(&scene.detached<TestAggregate>());
    if (i > 0) chain.back()->setValueForProperty(chain[chain.size() - 2], list);
  }
  std::vector<Ref<ZTSStyle>> copies;
  for (ZTSStyle* copy : ZTSAggregateStyle::deepCopyStyles({chain.rbegin(), chain.rend()})) copies.emplace_back(copy);
  ASSERT_EQ(copies.size(), chain.size());
  for (std::size_t i = 0; i + 1 < copies.size(); ++i)
    ASSERT_EQ(aggregate(copies[i].get()).p_referencedStyleForProperty(list), copies[i + 1]);
  EXPECT_FALSE(aggregate(copies[0].get()).overridesAnyNonReferencedStylePropertyIgnoringStyles({}));
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
  EXPECT_FALSE(a.overridesAnyNonReferencedStylePropertyIgnoringStyles(ignored));
  EXPECT_EQ(ignored.count(), 1u);
  inner.setValueForProperty(Value(a), label);  // a cycle ends
  EXPECT_FALSE(a.overridesAnyNonReferencedStylePropertyIgnoringStyles(ignored));
  a.setValueForProperty({}, label);
  EXPECT_TRUE(a.overridesAnyNonReferencedStyleProperty());
}

// ---- Array conveniences

/// Inspectable without being a style.
struct Proxy {
  bool canMutateProperty(PropertyKey) const { return !isFixed; }
  void setValueForProperty(const Ref<NSObject>& value, PropertyKey) { calls.push_back("set " + describe(value)); }
  void setValueForPropertyWithScope(const Ref<NSObject>& value, PropertyKey, NSObject* scope) {
    calls.push_back(format("set %@ in %@", value, scope));
  }
  void setValuesForProperties(const PropertyMap& values) { calls.push_back(zt::describe(values)); }
  static std::string describe(const Ref<NSObject>& value) { return format("%@", value); }
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
  setValuesForProperties(scene.sheet->styles().retainedSnapshot(), *mapOf({{size, 6}}));
  EXPECT_EQ(valueOf(locked, size), 6);
  scene.undo();
  EXPECT_EQ(valueOf(locked, size), -1);
}

}  // namespace
}  // namespace zt::testing
