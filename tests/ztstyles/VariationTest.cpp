// Which style answers a request, what is made otherwise, and styles together with what they refer to.

#include "Scene.h"

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

class VariationTest : public ::testing::Test {
 protected:
  Ref<ZTSStyle> vary(ZTSStyle& style, std::initializer_list<std::pair<PropertyKey, Value>> values,
                     StyleVariationRequest request = {}) {
    const Ref<PropertyMap> map = mapOf(values);
    request.propertyMap = map.get();
    return scene.sheet->variationOfStyle(&style, request);
  }
  std::size_t count() const { return scene.sheet->styles().count(); }

  Scene scene;
  TestStyle& base = scene.style("base", {}, {{size, 10}});
};

TEST_F(VariationTest, AsksTwiceAndGetsTheSameStyle) {
  const Ref<ZTSStyle> big = vary(base, {{size, 12}});
  EXPECT_TRUE(big->isAnonymous());
  EXPECT_EQ(big->parent(), &base);
  EXPECT_EQ(valueOf(*big, size), 12);
  EXPECT_EQ(vary(base, {{size, 12.0}}), big);
  EXPECT_EQ(vary(*big, {}), big);              // exactly its own overrides
  EXPECT_EQ(vary(*big, {{size, 10}}), &base);  // as the base
  EXPECT_EQ(vary(base, {}), &base);

  const Ref<ZTSStyle> locked = vary(base, {{size, 12}}, {.isLocked = true});
  EXPECT_NE(locked, big);
  EXPECT_EQ(vary(base, {{size, 12}}, {.isLocked = true}), locked);
  EXPECT_EQ(count(), 3u);
  const Ref<ZTSStyle> lockedBase = vary(base, {}, {.isLocked = true});  // the base is not locked
  EXPECT_FALSE(lockedBase == &base || lockedBase->overridesAnyProperty());

  EXPECT_EQ(scene.host.undo->undoActionNames().size(), 3u);
  scene.undo();
  EXPECT_EQ(lockedBase->stylesheet(), nullptr);
  EXPECT_NE(vary(base, {}, {.isLocked = true}), lockedBase);
}

TEST_F(VariationTest, MakesOneEachTimeWhereNothingMayBeReused) {
  TestAggregate& aggregate = scene.style<TestAggregate>("aggregate", "base", {{weight, 2}});
  const Ref<ZTSStyle> made = vary(aggregate, {{size, 10}, {weight, 3}}, {.identifier = "one", .canReuse = false});
  EXPECT_EQ(made->identifier(), "one");
  EXPECT_EQ(made->parent(), &aggregate);
  EXPECT_EQ(&made->classObject(), &TestAggregate::styleClass());
  EXPECT_TRUE(made->overridePropertyMap()->isEqual(*mapOf({{weight, 3}})));
  const Ref<ZTSStyle> bare = vary(base, {}, {.canReuse = false});
  EXPECT_FALSE(bare == &base || bare->overridesAnyProperty());
}

TEST_F(VariationTest, TakesTheCandidatesInTheirOrder) {
  TestStyle& identified = scene.style("identified", "base", {{size, 12}});
  TestStyle& first = scene.style({}, "base", {{size, 12}});
  TestStyle& second = scene.style({}, "base", {{size, 12}});
  TestStyle& plain = scene.style("plain", "base");

  EXPECT_EQ(vary(base, {{size, 12}}), &identified);  // enumerated first
  EXPECT_EQ(vary(base, {{size, 12}}, {.canReuseIdentifiedChildren = false}), &first);
  EXPECT_EQ(vary(base, {{size, 12}}, {.preferredStyle = &second}), &second);
  EXPECT_EQ(vary(second, {}), &second);  // the style itself before its siblings
  EXPECT_EQ(vary(base, {{size, 13}}, {.preferredStyle = &second})->overridePropertyMap()->count(), 1u);

  // An identified preferred style fits only where it stands for the base and nothing is wanted.
  const Ref<ZTSStyle> twin = make<TestStyle>({.identifier = "base", .overridePropertyMap = mapOf({{size, 10}}).get()});
  EXPECT_EQ(vary(base, {}, {.preferredStyle = twin.get()}), twin);
  EXPECT_EQ(vary(base, {}, {.preferredStyle = &plain}), &base);
  EXPECT_EQ(vary(base, {{size, 12}}, {.preferredStyle = &identified}), &identified);  // as the first child
  EXPECT_EQ(vary(plain, {}, {.canReuseIdentifiedChildren = false}), &plain);  // the base is answered all the same

  EXPECT_EQ(scene.sheet->anonymousChildOfStyle(&base, mapOf({{size, 12}}).get(), false), &first);
  EXPECT_EQ(scene.sheet->anonymousChildOfStyle(&base, nullptr, false), nullptr);
  EXPECT_EQ(scene.sheet->anonymousChildOfStyle(nullptr, nullptr, false), nullptr);
}

TEST_F(VariationTest, CollapsesOrCarriesWhatAnAnonymousStyleOverrides) {
  TestStyle& style = scene.style({}, "base", {{size, 10}, {colour, 1}});
  EXPECT_TRUE(vary(style, {{weight, 2}})->overridePropertyMap()->isEqual(*mapOf({{colour, 1}, {weight, 2}})));
  EXPECT_TRUE(vary(style, {{weight, 2}}, {.canCollapse = false})
                  ->overridePropertyMap()
                  ->isEqual(*mapOf({{size, 10}, {colour, 1}, {weight, 2}})));
}

/// The application's list style, where its class is looked for.
class ListStyle : public TestStyle {
 public:
  struct Class : TestClassOf<ListStyle> {
    using TestClassOf::TestClassOf;
    StringRef defaultStyleIdentifier() const override { return "list-default"; }
  };
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new Class("ZTWPListStyle", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
};

TEST_F(VariationTest, SaysWhatIsWrongAndGoesOn) {
  ZTUAssertionRecorder reports;
  ZTULogRecorder logs;
  EXPECT_EQ(scene.sheet->variationOfStyle(nullptr, {.identifier = "x"}), nullptr);
  EXPECT_THAT(reports.descriptions(), ElementsAre("Cannot create variation of nil style <0x0>.",
                                                  " Cannot specify non-nil identifier if variation may be reused."));
  reports.takeReports();

  TestStyle& orphan = scene.style({}, "nowhere", {{size, 1}});
  const std::string noParent =
      format("Cannot create variation of anonymous style <%p> with no parent.", address(&orphan));
  EXPECT_EQ(vary(orphan, {}), &orphan);
  EXPECT_FALSE(vary(orphan, {{size, 2}})->parentIdentifier().isPresent());
  EXPECT_THAT(reports.descriptions(), ElementsAre(noParent, noParent, noParent, noParent));
  reports.takeReports();

  // A style of elsewhere, whose base is another here, or is not here at all.
  Scene elsewhere;
  TestStyle& foreign = elsewhere.style("base", {}, {{size, 11}});
  elsewhere.style("list-default");
  TestStyle& varied = elsewhere.style({}, "base", {{weight, 1}});
  const auto differs = [&](ZTSStyle& style, ZTSStyle* its, ZTSStyle* reachable) {
    return format(
        "In creating variation of style <%p> in stylesheet <%p>; base style <%p> and reachable base style <%p> are not "
        "equivalent.",
        address(&style), address(style.stylesheet()), address(its), address(reachable));
  };
  const Ref<ZTSStyle> here = vary(varied, {});
  EXPECT_EQ(here->parent(), &base);
  EXPECT_THAT(reports.takeReports()[0].description, differs(varied, &foreign, &base));
  foreign.setValueForProperty(Value(10), size);
  foreign.setName("other name");
  EXPECT_EQ(vary(varied, {}), here);
  EXPECT_TRUE(reports.reports().empty());  // names are not compared

  ListStyle::styleClass();
  TestStyle& defaultList = *static_cast<TestStyle*>(elsewhere.sheet->styleWithIdentifier("list-default"));
  EXPECT_EQ(vary(defaultList, {{size, 1}})->parent(), nullptr);
  EXPECT_TRUE(reports.reports().empty());
  ASSERT_EQ(logs.entries().size(), 1u);
  EXPECT_EQ(logs.entries()[0].level, kZTULogNotice);
  EXPECT_EQ(logs.entries()[0].message, differs(defaultList, &defaultList, nullptr));
}

TEST_F(VariationTest, FindsOrMakesAnonymousStylesOfAClass) {
  const auto find = [&](const ZTSStyleClass& type, const PropertyMap* map) {
    return scene.sheet->anonymousStyleOfClass(type, "base", map, false);
  };
  const Ref<ZTSStyle> bare = find(TestStyle::styleClass(), nullptr);
  EXPECT_EQ(find(TestStyle::styleClass(), PropertyMap::make().get()), bare);
  EXPECT_NE(find(TestAggregate::styleClass(), nullptr), bare);
  EXPECT_NE(find(TestStyle::styleClass(), mapOf({{size, 1}}).get()), bare);
  EXPECT_NE(scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), {}, nullptr, false), bare);
  EXPECT_NE(scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), {}, nullptr, false),
            scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), {}, nullptr, false));  // none never matches

  ZTUAssertionRecorder reports;
  const std::size_t before = count();
  EXPECT_EQ(find(TestStyle::styleClass(), mapOf({{"nonsense", 1}}).get()), nullptr);
  EXPECT_EQ(count(), before);
  EXPECT_EQ(reports.reports().size(), 1u);
}

TEST_F(VariationTest, AddsAndRemovesWhatAStyleRefersTo) {
  const Ref<ZTSStyle> shared = make<TestStyle>({.identifier = "shared"});
  const Ref<ZTSStyle> middle =
      make<TestAggregate>({.identifier = "middle", .overridePropertyMap = mapOf({{list, *shared}}).get()});
  const Ref<ZTSStyle> top = make<TestAggregate>(
      {.identifier = "top", .overridePropertyMap = mapOf({{list, *shared}, {label, *middle}}).get()});
  middle->setValueForProperty(Ref<NSObject>(top), label);  // a cycle
  Log log;
  SheetRecorder recorder(log, "sheet");
  scene.sheet->addObserver(&recorder);
  scene.sheet->addStyleAndReferencedStyles(top);
  EXPECT_EQ(log, (Log{"sheet added middle", "sheet added shared", "sheet added top"}));
  scene.sheet->addStyleAndReferencedStyles(top);  // all are here
  EXPECT_EQ(log.size(), 3u);
  log.clear();
  scene.sheet->removeStyleAndReferencedStyles(top);
  EXPECT_EQ(log, (Log{"sheet removed middle", "sheet removed shared", "sheet removed top"}));
  EXPECT_EQ(shared->observers().count(), 0u);

  // What belongs elsewhere is reported twice, once on the way and once at the end; the rest is added.
  ZTUAssertionRecorder reports;
  Scene elsewhere;
  elsewhere.sheet->addStyle(shared);
  scene.sheet->addStyleAndReferencedStyles(middle);
  EXPECT_EQ(top->stylesheet(), scene.sheet.get());
  EXPECT_EQ(reports.takeReports().size(), 4u);  // from two references
  scene.sheet->removeStyleAndReferencedStyles(middle);
  EXPECT_THAT(reports.descriptions()[0],
              format("Attempt to remove a style <%@ %p> with stylesheet <%p> from stylesheet <%p>.", "TestStyle",
                     address(shared.get()), address(elsewhere.sheet.get()), address(scene.sheet.get())));
  EXPECT_EQ(reports.reports().size(), 4u);
  EXPECT_EQ(top->stylesheet(), nullptr);
  reports.takeReports();
  scene.sheet->addStyleAndReferencedStyles({});
  scene.sheet->removeStyleAndReferencedStyles({});
  EXPECT_EQ(reports.reports().size(), 2u);
  scene.sheet->removeObserver(&recorder);
  middle->removeValueForProperty(label);
}

}  // namespace
}  // namespace zt::testing
