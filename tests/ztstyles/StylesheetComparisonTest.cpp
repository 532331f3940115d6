// SPDX-License-Identifier: MIT
#include "Scene.h"

#include <ztstyles/style/ZTSStyleFindings.h>

namespace zt::testing {
namespace {

Ref<ZTSStylesheet> copyOf(const ZTSStylesheet& sheet) {
  const Ref<NSObject> copied = sheet.copy();
  return Ref<ZTSStylesheet>(dynamic_cast<ZTSStylesheet*>(copied.get()));
}

/// Notes what any stylesheet tells.
struct SheetListener {
  Log log;
  NotificationListener added{ZTSStylesheetStyleAddedNotification, nullptr,
                             [this](const NSNotification&) { log.push_back("added"); }};
  NotificationListener moved{ZTSStylesheetParentChangedNotification, nullptr,
                             [this](const NSNotification&) { log.push_back("parent"); }};
};

/// A parent stylesheet with `base`; below it `h1` on `base`, `h2` on `h1`, `h3` on `h2`, an anonymous style on `h2`,
/// `lone`, an orphan and an aggregate that refers to styles of both and to itself.
struct Family {
  Scene above;
  TestStyle& base = above.style("base");
  Scene scene{above.sheet.get()};
  ZTSStylesheet& sheet = *scene.sheet;
  TestStyle& h3 = scene.style("h3", "h2");
  TestStyle& h2 = scene.style("h2", "h1", {{size, 2}});
  TestStyle& lone = scene.style("lone");
  TestStyle& h1 = scene.style("h1", "base", {{size, 1}});
  TestStyle& orphan = scene.style("orphan", "nowhere");
  TestStyle& anonymous = scene.style({}, "h2", {{weight, 3}}, true);
  TestAggregate& aggregate = scene.style<TestAggregate>({}, {}, {{list, anonymous}, {label, base}});
};

TEST(StylesheetCopyTest, StandsUnderTheSameParentWithTheSameHost) {
  Family family;
  family.sheet.enableUnusedStyleCleanup();
  SheetRecorder recorder(family.scene.log);
  family.sheet.addObserver(&recorder);
  const Ref<ZTSStylesheet> copy = copyOf(family.sheet);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->parent(), family.above.sheet.get());
  EXPECT_TRUE(family.above.sheet->children().containsObject(copy.get()));
  EXPECT_EQ(copy->host(), &family.scene.host);
  EXPECT_TRUE(copy->isChangeCommunicationEnabled());
  EXPECT_FALSE(copy->isUnusedStyleCleanupEnabled());
  EXPECT_TRUE(copy->observers().isEmpty());
  family.sheet.removeObserver(&recorder);
}

TEST(StylesheetCopyTest, OnlyItsParentIsToldAndNothingIsRegisteredForUndo) {
  Family family;
  SheetListener listener;
  const std::size_t undoGroups = family.scene.host.undo->undoGroupCount();
  const Ref<ZTSStylesheet> copy = copyOf(family.sheet);
  EXPECT_EQ(std::exchange(listener.log, {}), Log{"parent"});
  EXPECT_EQ(family.scene.host.undo->undoGroupCount(), undoGroups);
  EXPECT_EQ(copyOf(*family.above.sheet)->parent(), nullptr);
  EXPECT_EQ(listener.log, Log{}) << "a copy without parent";
}

TEST(StylesheetCopyTest, ItsStylesFindTheirParentsAmongTheCopies) {
  Family family;
  family.aggregate.incrementUsageCount();
  family.lone.setName("Lone");
  const Ref<ZTSStylesheet> copy = copyOf(family.sheet);
  Log order;  // parents before children, roots first
  for (const auto& entry : copy->identifiedStyleEnumerator()) order.push_back(entry.key.text());
  EXPECT_EQ(order, (Log{"lone", "h1", "orphan", "h2", "h3"}));
  ZTSStyle* h1 = copy->styleWithIdentifier("h1");
  EXPECT_NE(h1, &family.h1);
  EXPECT_EQ(h1->parent(), &family.base);
  EXPECT_EQ(copy->styleWithIdentifier("h2")->parent(), h1);
  EXPECT_EQ(copy->styleWithIdentifier("lone")->name(), "Lone");
  EXPECT_EQ(copy->anonymousStyles().count(), 2u);
  for (ZTSStyle* style : copy->styles()) {
    EXPECT_EQ(style->stylesheet(), copy.get());
    EXPECT_EQ(style->usageCount(), 0u);
  }
}

TEST(StylesheetCopyTest, LivesAndDiesWithoutTheOriginalNoticing) {
  Family family;
  const auto linksOfBase = [&] { return family.base.children().count() + family.base.observers().count(); };
  const std::size_t before = linksOfBase();
  Ref<ZTSStylesheet> copy = copyOf(family.sheet);
  copy->styleWithIdentifier("h1")->setValueForProperty(NSNumber::withInteger(9), weight);
  EXPECT_EQ(valueOf(family.h2, weight), -1);
  EXPECT_EQ(linksOfBase(), 2 * before);
  family.scene.host.undo->removeAllActions();
  copy.reset();
  EXPECT_EQ(linksOfBase(), before);
  EXPECT_EQ(family.above.sheet->children().count(), 1u);
}

/// Counts its copies.
struct Counted : ZTSStyleOf<Counted, TestStyle> {
  static constexpr const char* kClassName = "Counted";
  Ref<NSObject> copy() const override { return ++copies, ZTSStyleOf<Counted, TestStyle>::copy(); }
  mutable int copies = 0;
};

TEST(StylesheetCopyTest, CopiesEachStyleOnceAndInItsOrder) {
  Scene scene;
  scene.style({}, {}, {{size, 1}});
  const Counted* counted[] = {&scene.style<Counted>("child", "base"), &scene.style<Counted>("base"),
                              &scene.style<Counted>({}, "base", {{size, 2}})};
  const Ref<ZTSStylesheet> copy = copyOf(*scene.sheet);
  for (const Counted* each : counted) EXPECT_EQ(each->copies, 1);
  EXPECT_EQ(valueOf(*copy->anonymousStyles().allObjects()[0], size), 1);
}

void setWeight(const ZTSStylesheet& sheet, Ref<NSObject> value) {
  sheet.anonymousStyles().anyObject()->p_setValueForProperty(std::move(value), weight);
}

TEST(StylesheetEqualityTest, ComparesHostsStylesAndParents) {
  Family family;
  const auto expectEqual = [&](bool isEqual, const char* what, void (*change)(ZTSStylesheet&)) {
    const Ref<ZTSStylesheet> copy = copyOf(family.sheet);
    EXPECT_EQ(copy->hash(), family.sheet.hash());
    change(*copy);
    EXPECT_EQ(family.sheet.isEqual(copy.get()), isEqual) << what;
    EXPECT_EQ(copy->isEqual(&family.sheet), isEqual) << what;
  };
  using Sheet = ZTSStylesheet;
  expectEqual(true, "a copy", [](Sheet&) {});
  expectEqual(false, "other host", [](Sheet& copy) { copy.setHost(nullptr); });
  expectEqual(false, "no parent", [](Sheet& copy) { copy.setParent({}); });
  expectEqual(false, "other name", [](Sheet& copy) { copy.styleWithIdentifier("h1")->setName("n"); });
  expectEqual(false, "other name of a style that no other inherits from",
              [](Sheet& copy) { copy.styleWithIdentifier("lone")->setName("n"); });
  expectEqual(false, "one style less",
              [](Sheet& copy) { copy.removeStyle(Ref<ZTSStyle>(copy.styleWithIdentifier("lone"))); });
  expectEqual(false, "one anonymous style less",
              [](Sheet& copy) { copy.removeStyle(Ref<ZTSStyle>(copy.anonymousStyles().allObjects()[1])); });
  expectEqual(false, "other anonymous value", [](Sheet& copy) { setWeight(copy, NSNumber::withInteger(4)); });
  expectEqual(true, "equal values of another kind", [](Sheet& copy) { setWeight(copy, NSNumber::withReal(3.0)); });
  EXPECT_FALSE(family.sheet.isEqual(nullptr));
  EXPECT_FALSE(family.sheet.isEqual(&family.h1));

  // Parents that are equal and not the same; a long line of them.
  const Ref<ZTSStylesheet> root = ZTSStylesheet::withHost();
  Ref<ZTSStylesheet> ends[] = {root, ZTSStylesheet::withHost()};
  for (int depth = 0; depth < 50'000; ++depth) {
    for (Ref<ZTSStylesheet>& end : ends) {
      const Ref<ZTSStylesheet> next = ZTSStylesheet::withHost();
      next->p_setParent(end);
      end = next;
    }
  }
  EXPECT_TRUE(ends[0]->isEqual(ends[1].get()));
  root->addStyle(make<TestStyle>());
  EXPECT_FALSE(ends[0]->isEqual(ends[1].get()));
}

/// A stylesheet of a class of its own.
struct SpecialSheet : ZTSStylesheet {
  const ZTClass& classObject() const override {
    static const auto* object = new ZTClassOf<SpecialSheet>("SpecialSheet", stylesheetClass());
    return *object;
  }
};

TEST(StylesheetEqualityTest, TellsClassesApartAndLooksIntoStylesThatAreValues) {
  EXPECT_FALSE(ZTSStylesheet::withHost()->isEqual(make<SpecialSheet>().get()));
  EXPECT_TRUE(make<SpecialSheet>()->isEqual(make<SpecialSheet>().get()));
  // Two anonymous styles each, alike but for what lies in a style that is their value; in any order.
  const auto sheetOf = [](std::initializer_list<int> sizes) {
    const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    for (const int each : sizes) {
      const Ref<ZTSStyle> value = make<TestStyle>({.overridePropertyMap = mapOf({{size, each}}).get()});
      sheet->addStyle(make<TestStyle>({.overridePropertyMap = mapOf({{list, *value}}).get()}));
    }
    return sheet;
  };
  const Ref<ZTSStylesheet> first = sheetOf({1, 2});
  EXPECT_TRUE(first->isEqual(sheetOf({2, 1}).get()));
  EXPECT_FALSE(first->isEqual(sheetOf({1, 3}).get()));
  EXPECT_FALSE(first->isEqual(sheetOf({1, 1}).get()));
  EXPECT_FALSE(sheetOf({1, 1})->isEqual(first.get()));
}

struct Loose : ZTSStyleOf<Loose, TestStyle> {
  static constexpr const char* kClassName = "Loose";
  bool isEqual(const NSObject* other) const override { return asStyle(other) != nullptr; }
};

TEST(StylesheetEqualityTest, AsksAClassThatComparesInAWayOfItsOwn) {
  const Ref<ZTSStylesheet> sheets[] = {ZTSStylesheet::withHost(), ZTSStylesheet::withHost()};
  for (int index : {0, 1}) {
    const Ref<PropertyMap> values = mapOf({{size, index}});
    const Ref<Loose> loose = make<Loose>({.overridePropertyMap = values.get()});
    const Ref<Loose> held = make<Loose>({.name = StringRef(std::to_string(index))});
    const Ref<PropertyMap> holding = mapOf({{list, *held}});
    sheets[index]->addStyle(loose);
    sheets[index]->addStyle(make<TestStyle>({.overridePropertyMap = holding.get()}));
  }
  EXPECT_TRUE(sheets[0]->isEqual(sheets[1].get()));
}

TEST(StylesheetEqualityTest, FollowsALongChainAndForgetsWhatItFoundThere) {
  Scene scene;
  StringRef above;
  for (int level = 0; level < 300; ++level) {
    const StringRef identifier("level" + std::to_string(level));
    scene.style(identifier, above, {{size, level}});
    above = identifier;
  }
  scene.style({}, above);
  const Ref<ZTSStylesheet> copy = copyOf(*scene.sheet);
  for (const int level : {0, 150, 299}) {
    const StringRef identifier("level" + std::to_string(level));
    EXPECT_TRUE(scene.sheet->isEqual(copy.get()));
    EXPECT_TRUE(copy->isEqual(scene.sheet.get()));
    copy->styleWithIdentifier(identifier)->p_setValueForProperty(NSNumber::withInteger(-1), size);
    EXPECT_FALSE(scene.sheet->isEqual(copy.get())) << level;
    EXPECT_FALSE(copy->isEqual(scene.sheet.get())) << level;
    EXPECT_FALSE(scene.sheet->anonymousStyles().anyObject()->isEqual(copy->anonymousStyles().anyObject())) << level;
    copy->styleWithIdentifier(identifier)->p_setValueForProperty(NSNumber::withInteger(level), size);
  }
}

TEST(StyleFindingsTest, KeepsNothingThatRestedOnAnAssumptionThatFailed) {
  // The root of a chain refers to a style at its end, so that the chains look alike while those styles are compared.
  struct Ring {
    Scene scene;
    TestStyle& end;
    TestStyle& other;
    explicit Ring(int value) : end(scene.style({}, "c19", {{size, value}})), other(scene.style({}, "c19")) {
      scene.style<TestAggregate>("c0", {}, {{list, end}});
      for (int level = 1; level < 20; ++level) {
        scene.style<TestAggregate>("c" + std::to_string(level), "c" + std::to_string(level - 1), {});
      }
    }
  };
  Ring one(1), alike(1), two(2);
  const ZTSStyleFindings findings;
  EXPECT_TRUE(one.end.isEqual(&alike.end));
  EXPECT_TRUE(one.other.isEqual(&alike.other));
  EXPECT_FALSE(one.end.isEqual(&two.end));
  EXPECT_FALSE(one.other.isEqual(&two.other));
}

TEST(StylesheetDescriptionTest, ListsEveryStyle) {
  Scene scene;
  const auto shown = [&] { return scene.sheet->description(); };
  EXPECT_EQ(shown(), format("ZTSStylesheet: %#x\nIdentified Styles: 0\nAnonymous Styles: 0\n", scene.sheet));
  TestStyle& body = scene.style("body");
  body.setName("Body");
  TestStyle& anonymous = scene.style({}, "body");
  anonymous.incrementUsageCount();
  EXPECT_EQ(shown(), format("ZTSStylesheet: %#x\nIdentified Styles: 1\n"
                            "\t%#x   TestStyle    Body    id: body    parent id:(null)    usage:1\n"
                            "Anonymous Styles: 1\n"
                            "\t%#x   TestStyle    (null)    id: (null)    parent id:body    usage :1\n",
                            scene.sheet, address(&body), address(&anonymous)));
}

}  // namespace
}  // namespace zt::testing
