// SPDX-License-Identifier: MIT

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
  EXPECT_EQ(vary(*big, {}), big) << "exactly its own overrides";
}

TEST_F(VariationTest, TheBaseItselfAnswersWhereNothingDiffersFromIt) {
  EXPECT_EQ(vary(base, {}), &base);
  EXPECT_EQ(vary(*vary(base, {{size, 12}}), {{size, 10}}), &base);
}

TEST_F(VariationTest, LockedAndUnlockedStylesDoNotStandForOneAnother) {
  const Ref<ZTSStyle> big = vary(base, {{size, 12}});
  const Ref<ZTSStyle> locked = vary(base, {{size, 12}}, {.isLocked = true});
  EXPECT_NE(locked, big);
  EXPECT_EQ(vary(base, {{size, 12}}, {.isLocked = true}), locked);
  const Ref<ZTSStyle> lockedBase = vary(base, {}, {.isLocked = true});
  EXPECT_NE(lockedBase, &base);
  EXPECT_FALSE(lockedBase->overridesAnyProperty());
}

TEST_F(VariationTest, MakingOneIsUndoneAndOneThatIsGoneAnswersNoMore) {
  const std::size_t before = count();
  const Ref<ZTSStyle> locked = vary(base, {}, {.isLocked = true});
  EXPECT_EQ(count(), before + 1);
  EXPECT_EQ(scene.host.undo->undoActionNames().size(), 1u);
  scene.undo();
  EXPECT_EQ(locked->stylesheet(), nullptr);
  EXPECT_NE(vary(base, {}, {.isLocked = true}), locked);
}

TEST_F(VariationTest, MakesOneEachTimeWhereNothingMayBeReused) {
  TestAggregate& aggregate = scene.style<TestAggregate>("aggregate", "base", {{weight, 2}});
  const Ref<ZTSStyle> made = vary(aggregate, {{size, 10}, {weight, 3}}, {.identifier = "one", .canReuse = false});
  EXPECT_EQ(made->identifier(), "one");
  EXPECT_EQ(made->parent(), &aggregate);
  EXPECT_EQ(&made->classObject(), &TestAggregate::styleClass());
  EXPECT_TRUE(made->overridePropertyMap()->isEqual(*mapOf({{weight, 3}})));
  const Ref<ZTSStyle> bare = vary(base, {}, {.canReuse = false});
  EXPECT_NE(bare, &base);
  EXPECT_FALSE(bare->overridesAnyProperty());
}

TEST_F(VariationTest, CollapsesOrCarriesWhatAnAnonymousStyleOverrides) {
  TestStyle& style = scene.style({}, "base", {{size, 10}, {colour, 1}});
  for (bool collapses : {true, false}) {
    const Ref<PropertyMap> wanted = mapOf({{colour, 1}, {weight, 2}});
    if (!collapses) wanted->set(size, Value(10).object);
    const Ref<ZTSStyle> varied = vary(style, {{weight, 2}}, {.canCollapse = collapses});
    EXPECT_TRUE(varied->overridePropertyMap()->isEqual(*wanted));
  }
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

  // An identified preferred style fits only where it stands for the base and nothing is wanted.
  const Ref<ZTSStyle> twin = make<TestStyle>({.identifier = "base", .overridePropertyMap = mapOf({{size, 10}}).get()});
  EXPECT_EQ(vary(base, {}, {.preferredStyle = twin.get()}), twin);
  EXPECT_EQ(vary(base, {}, {.preferredStyle = &plain}), &base);
  EXPECT_EQ(vary(plain, {}, {.canReuseIdentifiedChildren = false}), &plain);  // the base is answered all the same

  EXPECT_EQ(scene.sheet->anonymousChildOfStyle(nullptr, nullptr, false), nullptr);
}

struct Recorded : ZTSStyleObserver {
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override { record.reset(&change); }
  Ref<const ZTSStyleChangeInfo> record;
};

TEST_F(VariationTest, ARecordAnswersAndRemembersAStyleThatLooksAsBeforeTheChange) {
  Scene elsewhere;
  TestAggregate& style = scene.style<TestAggregate>(
      "a", "base", {{weight, 1}, {colour, 1}, {list, elsewhere.style("foreign")}, {label, base}}, true);
  Recorded recorded;
  style.addObserver(&recorded);
  const Ref<PropertyMap> change =  // the size is what it inherited
      mapOf({{weight, 2}, {size, 10}, {list, NSNull::null()}, {label, NSNull::null()}});
  style.setValuesForProperties(*change);
  const Ref<const ZTSStyleChangeInfo> record = recorded.record;
  const Ref<ZTSStyle> before = record->unchangedVariation();
  EXPECT_EQ(before->parent(), &style);
  EXPECT_TRUE(before->isLocked());
  EXPECT_TRUE(before->isAnonymous());
  EXPECT_TRUE(before->overridePropertyMap()->isEqual(*mapOf({{weight, 1}, {label, base}})));
  style.setValuesForProperties(*mapOf({{weight, 1}, {label, base}}));
  EXPECT_EQ(record->unchangedVariation(), before);
  style.setValuesForProperties(*change);
  EXPECT_EQ(recorded.record->unchangedVariation(), before);  // found, not made
  style.setValuesForProperties(*change);
  EXPECT_EQ(recorded.record->unchangedVariation(), &style);  // nothing has changed: an empty request
  style.removeObserver(&recorded);

  TestStyle& anonymous = scene.style({}, "base", {{weight, 1}});
  anonymous.addObserver(&recorded);
  anonymous.setValueForProperty(Value(2), weight);
  EXPECT_EQ(recorded.record->unchangedVariation(), &anonymous);  // own entries go before old values
  EXPECT_EQ(ZTSStyleChangeInfo::withStyleChangedProperty(&scene.detached(), size, {})->unchangedVariation(), nullptr);
}

/// The application's list style, where its class is looked for.
struct ListStyle : TestStyle {
  struct Class : ZTSStyleClassOf<ListStyle> {
    using ZTSStyleClassOf::ZTSStyleClassOf;
    StringRef defaultStyleIdentifier() const override { return "list-default"; }
  };
};

TEST_F(VariationTest, ReportsAStyleThatIsMissingAndAnIdentifierThatCannotBeHad) {
  ZTUAssertionRecorder reports;
  EXPECT_EQ(scene.sheet->variationOfStyle(nullptr, {.identifier = "x"}), nullptr);
  EXPECT_THAT(reports.descriptions(), ElementsAre("Cannot create variation of nil style <0x0>.",
                                                  " Cannot specify non-nil identifier if variation may be reused."));
}

TEST_F(VariationTest, ReportsAnAnonymousStyleWithoutParentAndGoesOnWithoutBase) {
  ZTUAssertionRecorder reports;
  TestStyle& orphan = scene.style({}, "nowhere", {{size, 1}});
  EXPECT_EQ(vary(orphan, {}), &orphan);
  EXPECT_FALSE(vary(orphan, {{size, 2}})->parentIdentifier().isPresent());
  EXPECT_EQ(reports.descriptions(),
            Log(4, format("Cannot create variation of anonymous style <%p> with no parent.", address(&orphan))));
}

/// What is said where the base of a style is another one, or none, in the stylesheet that makes the variation.
std::string differs(const ZTSStyle& style, const ZTSStyle* its, const ZTSStyle* reachable) {
  return format(
      "In creating variation of style <%p> in stylesheet <%p>; base style <%p> and reachable base style <%p> are not "
      "equivalent.",
      address(&style), address(style.stylesheet()), address(its), address(reachable));
}

TEST_F(VariationTest, ReportsABaseThatIsAnotherStyleHereAndTakesTheOneHere) {
  ZTUAssertionRecorder reports;
  Scene elsewhere;
  TestStyle& foreign = elsewhere.style("base", {}, {{size, 11}});
  TestStyle& varied = elsewhere.style({}, "base", {{weight, 1}});
  const Ref<ZTSStyle> here = vary(varied, {});
  EXPECT_EQ(here->parent(), &base);
  EXPECT_THAT(reports.takeReports()[0].description, differs(varied, &foreign, &base));
  foreign.setValueForProperty(Value(10), size);
  foreign.setName("other name");
  EXPECT_EQ(vary(varied, {}), here);
  EXPECT_TRUE(reports.reports().empty()) << "names are not compared";
}

TEST_F(VariationTest, LogsADefaultListStyleThatIsNotHere) {
  ZTUAssertionRecorder reports;
  ZTULogRecorder logs;
  Scene elsewhere;
  TestStyle& defaultList = elsewhere.style("list-default");
  static const ListStyle::Class listClass("ZTWPListStyle", TestStyle::styleClass(), sceneKeys());
  EXPECT_EQ(vary(defaultList, {{size, 1}})->parent(), nullptr);
  EXPECT_TRUE(reports.reports().empty());
  ASSERT_EQ(logs.entries().size(), 1u);
  EXPECT_EQ(logs.entries()[0].level, kZTULogNotice);
  EXPECT_EQ(logs.entries()[0].message, differs(defaultList, &defaultList, nullptr));
  EXPECT_EQ(vary(elsewhere.style("another list"), {{size, 1}})->parent(), nullptr);
  EXPECT_EQ(reports.reports().size(), 1u) << "only the default one may be missing";
}

TEST_F(VariationTest, FindsOrMakesAnonymousStylesOfAClass) {
  const auto find = [&](const ZTSStyleClass& type, const StringRef& parent, const Ref<PropertyMap>& map = {}) {
    return scene.sheet->anonymousStyleOfClass(type, parent, map.get(), false);
  };
  const ZTSStyleClass& type = TestStyle::styleClass();
  const Ref<ZTSStyle> bare = find(type, "base");
  EXPECT_EQ(find(type, "base", PropertyMap::make()), bare);
  EXPECT_NE(find(TestAggregate::styleClass(), "base"), bare);
  EXPECT_NE(find(type, {}), find(type, {}));  // none never matches
  ZTUAssertionRecorder reports;
  EXPECT_EQ(find(type, "base", mapOf({{"nonsense", 1}})), nullptr);
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
  for (int twice = 0; twice < 2; ++twice) scene.sheet->addStyleAndReferencedStyles(top);
  scene.sheet->removeStyleAndReferencedStyles(top);
  EXPECT_EQ(log, (Log{"sheet added middle", "sheet added shared", "sheet added top", "sheet removed middle",
                      "sheet removed shared", "sheet removed top"}));
  scene.sheet->removeObserver(&recorder);

  // What belongs elsewhere is reported twice, once on the way and once at the end; the rest is added.
  ZTUAssertionRecorder reports;
  Scene elsewhere;
  elsewhere.sheet->addStyle(shared);
  scene.sheet->addStyleAndReferencedStyles(middle);
  EXPECT_EQ(top->stylesheet(), scene.sheet.get());
  EXPECT_EQ(reports.takeReports().size(), 4u);  // from two references
  scene.sheet->removeStyleAndReferencedStyles(middle);
  EXPECT_EQ(reports.descriptions()[0],
            format("Attempt to remove a style <%@ %p> with stylesheet <%p> from stylesheet <%p>.", "TestStyle",
                   address(shared.get()), address(elsewhere.sheet.get()), address(scene.sheet.get())));
  EXPECT_EQ(top->stylesheet(), nullptr);
  scene.sheet->addStyleAndReferencedStyles({});
  scene.sheet->removeStyleAndReferencedStyles({});
  EXPECT_EQ(reports.reports().size(), 6u);
  middle->removeValueForProperty(label);
}

}  // namespace
}  // namespace zt::testing
