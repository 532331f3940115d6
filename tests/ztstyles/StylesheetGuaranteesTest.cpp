// SPDX-License-Identifier: MIT
// What stays true of a stylesheet when application code throws, overrides and renames on the way, and when it stores
// things itself.

#include "Scene.h"

#include <platform/NSException.h>

#include <algorithm>
#include <cctype>

namespace zt::testing {
namespace {

/// Does what the test wants in each of its document hooks, or fails in one of its overrides.
struct Hooked : ZTSStyleOf<Hooked, TestStyle> {
  static constexpr const char* kClassName = "Hooked";
  void willBeAddedToDocument(NSDocument*, NSObject*) override { run(willBeAdded); }
  void wasAddedToDocument(NSDocument*, NSObject*) override { run(wasAdded); }
  void willBeRemovedFromDocument(NSDocument*) override { run(willBeRemoved); }
  void wasRemovedFromDocument(NSDocument*) override { run(wasRemoved); }
  void setStylesheet(ZTSStylesheet* stylesheet) override {
    if (refusesLinks) throw NSGenericException("no link");
    ZTSStyle::setStylesheet(stylesheet);
  }
  static void run(const std::function<void()>& hook) {
    if (hook) hook();
  }
  std::function<void()> willBeAdded, wasAdded, willBeRemoved, wasRemoved;
  bool refusesLinks = false;
};

void expectSound(ZTSStylesheet& sheet) {
  ZTUAssertionRecorder reports;
  sheet.validate();
  EXPECT_EQ(reports.descriptions(), Log{});
  EXPECT_TRUE(sheet.indexesAreRight());
}

/// The identifiers of the identified styles, in order, with "*" for each anonymous one.
Log held(const ZTSStylesheet& sheet) {
  Log all;
  for (const auto& entry : sheet.identifiedStyleEnumerator()) all.push_back(entry.key.text());
  all.insert(all.end(), sheet.anonymousStyles().count(), "*");
  return all;
}

TEST(StylesheetExceptionTest, EndsTheLinkOfAStyleThatIsHeldNoLongerWhateverItThrows) {
  Scene scene;
  auto& child = scene.style("child", "A");
  auto& old = scene.style<TestAggregate>("A");
  ZTUAssertionRecorder reports;
  try {
    old.lockedStyleSetValuesForProperties(*mapOf({{list, 3}}), 0);  // no style: raised now and when the style leaves
  } catch (const NSException&) {
  }
  auto& next = scene.detached("A");
  try {
    scene.add(next);
  } catch (const NSException&) {
  }
  EXPECT_EQ(old.stylesheet(), nullptr);
  EXPECT_EQ(child.parent(), &next);

  auto& stubborn = scene.style<Hooked>("B");
  stubborn.refusesLinks = true;
  EXPECT_THROW(scene.add(scene.detached("B")), NSGenericException);
  EXPECT_EQ(stubborn.stylesheet(), nullptr);
  EXPECT_THROW(scene.add(stubborn), NSGenericException);
  EXPECT_EQ(stubborn.stylesheet(), scene.sheet.get()) << "what is held is linked";
  EXPECT_THROW(scene.remove(stubborn), NSGenericException);
  EXPECT_EQ(stubborn.stylesheet(), nullptr);
  expectSound(*scene.sheet);
  scene.host.undo->removeAllActions();
  scene.sheet.reset();
  EXPECT_EQ(old.document(), nullptr);
}

/// Does something when it has left its stylesheet.
struct Leaving : ZTSStyleOf<Leaving, TestStyle> {
  static constexpr const char* kClassName = "Leaving";
  void updateParent() override {
    ZTSStyle::updateParent();
    if (stylesheet() == nullptr && whenLeft) std::exchange(whenLeft, {})();
  }
  std::function<void()> whenLeft;
};

TEST(StylesheetExceptionTest, AStyleThatEntersAnotherStylesheetWhileItLeavesStaysThere) {
  Scene scene;
  Scene other;
  auto& style = scene.style<Leaving>("a", "base");
  style.whenLeft = [&] {
    other.add(style);
    throw NSGenericException("no");
  };
  EXPECT_THROW(scene.remove(style), NSGenericException);
  EXPECT_EQ(style.stylesheet(), other.sheet.get());
  expectSound(*scene.sheet);
  expectSound(*other.sheet);
}

TEST(StylesheetExceptionTest, ClearsTheLinkOfAStyleThatWasOnlyLinkedWhenItEnds) {
  Scene scene;
  auto& guest = scene.detached("guest");
  auto& another = scene.detached("another");
  auto& added = scene.detached("added");
  for (ZTSStyle* style : {&guest, &another, &added}) style->setStylesheet(scene.sheet.get());
  another.setStylesheet(nullptr);
  scene.add(added);
  scene.host.undo->removeAllActions();
  scene.sheet.reset();
  EXPECT_EQ(guest.stylesheet(), nullptr);
  EXPECT_EQ(added.stylesheet(), nullptr);
  EXPECT_EQ(another.document(), nullptr);
}

TEST(StylesheetExceptionTest, ARaisingHookBeforeTheChangePreventsItAndLeavesNothingToUndo) {
  Scene scene;
  auto& style = scene.style<Hooked>("a");
  auto& next = scene.detached<Hooked>("a");
  const auto raise = [] { throw NSGenericException("no"); };
  style.willBeRemoved = raise;
  EXPECT_THROW(scene.remove(style), NSGenericException);
  EXPECT_THROW(scene.add(next), NSGenericException);
  style.willBeRemoved = {};
  next.willBeAdded = raise;
  EXPECT_THROW(scene.add(next), NSGenericException);
  EXPECT_FALSE(scene.host.undo->canUndo());
  EXPECT_EQ(scene.sheet->styleWithIdentifier("a"), &style);

  // After the change it is told to the end, and can be undone.
  next.willBeAdded = {};
  next.wasAdded = raise;
  scene.watch();
  EXPECT_THROW(scene.add(next), NSGenericException);
  EXPECT_EQ(scene.log, Log{"observer added a"});
  scene.undo();
  EXPECT_EQ(scene.sheet->styleWithIdentifier("a"), &style);
  expectSound(*scene.sheet);
}

TEST(StylesheetExceptionTest, UndoIsExactWhereAHookRenamesWhatIsAddedRemovedOrDisplaced) {
  struct Case {
    const char* name;
    std::function<void(Scene&, Hooked& there, Hooked& next)> prepare;
    bool removes;
  };
  const auto ref = [](ZTSStyle& style) { return Ref<ZTSStyle>(&style); };
  const Case cases[] = {
      {"the displaced one makes room",
       [&](Scene& s, Hooked& there, Hooked&) {
         there.willBeRemoved = [&, once = true]() mutable {
           if (std::exchange(once, false)) s.sheet->identifyStyle(ref(there), "b");
         };
       },
       false},
      {"the displaced one becomes anonymous",
       [&](Scene& s, Hooked& there, Hooked&) {
         there.willBeRemoved = [&, once = true]() mutable {
           if (std::exchange(once, false)) s.sheet->anonymizeStyle(ref(there));
         };
       },
       false},
      {"another comes to be displaced",
       [&](Scene& s, Hooked& there, Hooked& next) {
         next.willBeAdded = [&, once = true]() mutable {
           if (!std::exchange(once, false)) return;
           s.sheet->anonymizeStyle(ref(there));
           s.sheet->identifyStyle(ref(*s.sheet->styleWithIdentifier("other")), "a");
         };
       },
       false},
      {"the removed one is renamed",
       [&](Scene& s, Hooked& there, Hooked&) {
         there.willBeRemoved = [&, once = true]() mutable {
           if (std::exchange(once, false)) s.sheet->identifyStyle(ref(there), "b");
         };
       },
       true},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    Scene scene;
    auto& there = scene.style<Hooked>("a");
    auto& next = scene.detached<Hooked>("a");
    scene.style("other");
    each.prepare(scene, there, next);
    const auto state = [&] {
      Log all = held(*scene.sheet);
      std::sort(all.begin(), all.end());
      all.push_back(there.stylesheet() != nullptr ? there.identifier().text() : "gone");
      all.push_back(next.stylesheet() != nullptr ? next.identifier().text() : "gone");
      return all;
    };
    const Log before = state();
    ZTUAssertionRecorder reports;
    scene.host.undo->performInGroup([&] { each.removes ? scene.remove(there) : scene.add(next); });
    const Log after = state();
    EXPECT_NE(after, before);
    scene.undo();
    EXPECT_EQ(state(), before);
    scene.redo();
    EXPECT_EQ(state(), after);
    EXPECT_EQ(reports.descriptions(), Log{});
    expectSound(*scene.sheet);
  }
}

/// Finds a style under its identifier in any case of letters.
struct FoldingSheet : ZTSStylesheet {
  ZTSStyle* cascadedStyleWithIdentifier(const StringRef& identifier) const override {
    std::string folded = identifier.text();
    for (char& letter : folded) letter = static_cast<char>(std::tolower(letter));
    return ZTSStylesheet::cascadedStyleWithIdentifier(identifier ? StringRef(folded) : StringRef());
  }
};

/// Fails, as often as it is told to, when it looks for its parent.
struct Failing : ZTSStyleOf<Failing, TestStyle> {
  static constexpr const char* kClassName = "Failing";
  void updateParent() override {
    ++tries;
    if (failures > 0 && failures-- > 0) throw NSGenericException(std::to_string(failures));
    ZTSStyle::updateParent();
  }
  int failures = 0;
  int tries = 0;
};

TEST(OrphanTest, AreAskedWhereAStylesheetLooksUpInItsOwnWayOrIsNotListedAbove) {
  Scene scene;
  scene.sheet = make<FoldingSheet>();
  ASSERT_TRUE(scene.sheet->initWithHost(&scene.host));
  auto& loud = scene.style({}, "BODY");
  auto& body = scene.style("body");
  EXPECT_EQ(loud.parent(), &body);
  Scene below(scene.sheet.get());
  auto& lower = below.style({}, "HEADING");
  auto& heading = scene.style("heading");
  EXPECT_EQ(lower.parent(), &heading);

  // Whoever is not listed does not hear of what comes above, and finds it when it is asked the next time.
  Scene upper;
  Scene hidden;
  hidden.sheet->p_setParent(upper.sheet);
  auto& waiting = hidden.style({}, "above");
  auto& above = upper.style("above");
  EXPECT_EQ(waiting.parent(), nullptr);
  hidden.style("unrelated");
  EXPECT_EQ(waiting.parent(), &above);
  auto& another = hidden.style({}, "above too");
  auto& aboveToo = upper.style("above too");
  hidden.style("unrelated too");
  EXPECT_EQ(another.parent(), &aboveToo);
  // A parent that was stored and nothing else is looked through at the next retry, also from further below.
  Scene low;
  Scene lowest(low.sheet.get());
  auto& far = lowest.style({}, "above");
  low.sheet->p_setParent(upper.sheet);
  upper.sheet->p_addChild(*low.sheet);
  lowest.style("unrelated");
  EXPECT_EQ(far.parent(), &above);
  for (const Scene* each : {&hidden, &lowest, &low}) expectSound(*each->sheet);
  low.sheet->setParent({});
}

TEST(OrphanTest, AllAreAskedAlthoughOneFailsAndTheFirstExceptionComesOut) {
  Scene scene;
  auto& first = scene.style<Failing>({}, "late");
  auto& plain = scene.style({}, "late");
  auto& second = scene.style<Failing>({}, "late");
  first.failures = second.failures = 1;
  auto& late = scene.detached("late");
  try {
    scene.add(late);
    FAIL() << "nothing came out";
  } catch (const NSGenericException& exception) {
    EXPECT_EQ(exception.reason(), "0");
  }
  EXPECT_EQ(plain.parent(), &late);
  EXPECT_EQ(first.parent(), &late) << "linked, although untold";
  EXPECT_EQ(second.parent(), &late);

  // The children of one that leaves let go of it, and those of one that is renamed.
  for (Failing* each : {&first, &second}) each->failures = 1;
  EXPECT_THROW(scene.sheet->identifyStyle(Ref<ZTSStyle>(&late), "later"), NSGenericException);
  EXPECT_TRUE(late.children().isEmpty());
  expectSound(*scene.sheet);
  scene.undo();
  EXPECT_EQ(late.children().count(), 3u);
  for (Failing* each : {&first, &second}) each->failures = 1;
  EXPECT_THROW(scene.remove(late), NSGenericException);
  EXPECT_TRUE(late.children().isEmpty());
  // And where the stylesheet is hung elsewhere.
  Scene above;
  auto& upper = above.style("late");
  for (Failing* each : {&first, &second}) each->failures = 1;
  EXPECT_THROW(scene.sheet->setParent(above.sheet), NSGenericException);
  EXPECT_EQ(upper.children().count(), 3u);
  expectSound(*scene.sheet);
}

/// Fails, as often as it is told to, when a parent is looked up.
struct FailingSheet : ZTSStylesheet {
  ZTSStyle* cascadedStyleWithIdentifier(const StringRef& identifier) const override {
    if (failures > 0 && failures-- > 0) throw NSGenericException("no");
    return ZTSStylesheet::cascadedStyleWithIdentifier(identifier);
  }
  mutable int failures = 0;
};

TEST(OrphanTest, AStyleThatCouldNotLookIsAskedAgain) {
  Scene scene;
  const Ref<FailingSheet> sheet = make<FailingSheet>();
  scene.sheet = sheet;
  ASSERT_TRUE(sheet->initWithHost(&scene.host));
  auto& base = scene.style("base");
  auto& style = scene.detached({}, "base");
  sheet->failures = 2;
  EXPECT_THROW(scene.add(style), NSGenericException);
  EXPECT_EQ(style.stylesheet(), sheet.get());
  EXPECT_EQ(style.parent(), nullptr);
  scene.style("unrelated");
  EXPECT_EQ(style.parent(), &base);
  expectSound(*sheet);

  // One of a class that resolves in its own way is asked whatever is added, as a walk over all would.
  Scene plain;
  auto& waiting = plain.style<Failing>({}, "nowhere");
  const int tries = waiting.tries;
  plain.style("unrelated");
  EXPECT_EQ(waiting.tries, tries + 1);
}

/// Does not count a use while it fails.
struct Unwilling : ZTSStyleOf<Unwilling, TestStyle> {
  static constexpr const char* kClassName = "Unwilling";
  void incrementUsageCount() override {
    if (fails) throw NSGenericException("no");
    ZTSStyle::incrementUsageCount();
  }
  bool fails = false;
};

TEST(OrphanTest, WhatAParentDidNotCountIsNotTakenBackFromIt) {
  Scene scene;
  auto& parent = scene.style<Unwilling>("parent");
  auto& child = scene.style("child");
  child.incrementUsageCount();
  parent.fails = true;
  EXPECT_THROW(child.setParentIdentifier("parent"), NSGenericException);
  EXPECT_EQ(child.parent(), &parent);
  parent.fails = false;
  parent.incrementUsageCount();
  child.setParentIdentifier({});
  EXPECT_EQ(parent.usageCount(), 1u) << "the use of somebody else";
  EXPECT_TRUE(parent.children().isEmpty());
  expectSound(*scene.sheet);
}

TEST(OrphanTest, AnExplicitRetryThrowsWhatAStyleThrew) {
  Scene scene;
  auto& waiting = scene.style<Failing>({}, "nowhere");
  waiting.failures = 1;
  EXPECT_THROW(scene.sheet->updateParentForOrphanStyles(), NSGenericException);
  EXPECT_EQ(scene.sheet->orphanStyles().count(), 1u);
}

TEST(OrphanTest, AnExplicitRetryInsideOfOneAsksAll) {
  Scene scene;
  Scene above;
  scene.sheet->p_setParent(above.sheet);
  auto& late = scene.style({}, "late");
  auto& waiting = scene.style({}, "known");
  auto& known = above.style("known");  // unheard below
  StyleRecorder retrying(scene.log, [&](const ZTSStyleChangeInfo&) {
    EXPECT_EQ(waiting.parent(), nullptr);
    scene.sheet->updateParentForOrphanStyles();
    EXPECT_EQ(waiting.parent(), &known);
  });
  late.addObserver(&retrying);
  scene.style("late", {}, {{size, 1}});
  EXPECT_EQ(scene.log.size(), 1u);
  late.removeObserver(&retrying);
}

/// Keeps the map that it is initialised with.
struct Keeping : ZTSStyleOf<Keeping, TestStyle> {
  static constexpr const char* kClassName = "Keeping";
  bool initWithName(const ZTSStyleFields& fields) override {
    kept.reset(const_cast<PropertyMap*>(fields.overridePropertyMap));
    return ZTSStyle::initWithName(fields);
  }
  Ref<PropertyMap> kept;
};

TEST(StylesheetStorageTest, AMapThatAClassKeptIsNotUsedAgain) {
  Scene scene;
  auto& base = scene.style<Keeping>("base");
  const auto vary = [&](int number) {
    return scene.sheet->variationOfStyle(&base, {.propertyMap = mapOf({{size, number}}).get()});
  };
  const Ref<ZTSStyle> first = vary(1);
  vary(2);
  const auto& keeping = dynamic_cast<const Keeping&>(*first);
  ASSERT_NE(keeping.kept, nullptr);
  EXPECT_TRUE(keeping.kept->isEqual(*mapOf({{size, 1}})));
  EXPECT_EQ(vary(1), first);
}

/// Stores anonymous styles itself.
struct OpenSheet : ZTSStylesheet {
  using ZTSStylesheet::p_anonymousStyles;
};

TEST(StylesheetStorageTest, IndexesFollowWhatASubclassStoresItselfAndWhatIsLinkedElsewhere) {
  Scene scene;
  const Ref<OpenSheet> sheet = make<OpenSheet>();
  ASSERT_TRUE(sheet->initWithHost(&scene.host));
  sheet->enableUnusedStyleCleanup();
  const auto find = [&](int number) {
    return sheet->anonymousStyleOfClass(TestStyle::styleClass(), "base", mapOf({{size, number}}).get(), false);
  };
  for (int number = 0; number < 40; ++number) find(number)->incrementUsageCount();
  auto& stored = scene.detached({}, "base", {{size, 50}});
  sheet->p_anonymousStyles().addObject(&stored);
  EXPECT_EQ(find(50), &stored);
  stored.setStylesheet(sheet.get());

  // Linked elsewhere, it tells its uses there.
  scene.host.undo->disableUndoRegistration();
  const Ref<ZTSStyle> stranger = find(7);
  stranger->p_setStylesheet(scene.sheet.get());
  stranger->decrementUsageCount();
  sheet->cleanupUnusedStyles();
  EXPECT_FALSE(sheet->holdsStyle(*stranger));
  EXPECT_FALSE(sheet->holdsStyle(stored));
  EXPECT_EQ(sheet->anonymousStyles().count(), 39u);
  stranger->p_setStylesheet(nullptr);
  scene.host.undo->enableUndoRegistration();
  EXPECT_TRUE(sheet->indexesAreRight());
}

/// Answers no copy.
struct Unique : ZTSStyleOf<Unique, TestStyle> {
  static constexpr const char* kClassName = "Unique";
  Ref<NSObject> copy() const override { return {}; }
};

TEST(StylesheetStorageTest, ACopyThatCannotBeMadeIsReported) {
  Scene scene;
  auto& unique = scene.style<Unique>("unique");
  scene.style("a", "unique");
  ZTUAssertionRecorder reports;
  const Ref<NSObject> copied = scene.sheet->copy();
  ASSERT_EQ(reports.reports().size(), 1u);
  EXPECT_EQ(reports.reports()[0].subject.get(), &unique);
  const auto* copy = dynamic_cast<const ZTSStylesheet*>(copied.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(held(*copy), Log{"a"});
  EXPECT_EQ(copy->styleWithIdentifier("a")->parent(), nullptr);

  const Ref<OpenSheet> nameless = make<OpenSheet>();
  ASSERT_TRUE(nameless->initWithHost(nullptr));
  EXPECT_EQ(nameless->copy(), nullptr);
  EXPECT_EQ(reports.reports().size(), 2u);
}

/// Counts how often it is asked.
struct CountingSheet : ZTSStylesheet {
  void addObserver(ZTSStylesheetObserver* observer) override { ++calls, ZTSStylesheet::addObserver(observer); }
  ZTSStyleSet identifiedStylesOfClass(const ZTSStyleClass*) const override { return ++calls, ZTSStyleSet(); }
  mutable int calls = 0;
};

TEST(StylesheetStorageTest, WhatClassesMayReplaceIsCalledThroughTheReplacement) {
  Scene scene;
  const Ref<CountingSheet> counting = make<CountingSheet>();
  ASSERT_TRUE(counting->initWithHost(&scene.host));
  scene.sheet = counting;
  scene.watch();
  scene.style("a").setName("N");
  EXPECT_EQ(scene.sheet->stylesOfClassWithName(&TestStyle::styleClass(), "N").count(), 0u);
  EXPECT_EQ(counting->calls, 2);
}

}  // namespace
}  // namespace zt::testing
