// SPDX-License-Identifier: MIT

// How changes travel to children, observers and listeners, and what is kept on the way.

#include "Scene.h"

#include <platform/NSException.h>
#include <platform/ZTNesting.h>

#include <memory>

namespace zt::testing {
namespace {

TEST(PropagationTest, TellsDescendantsFirstThenObserversThenListeners) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}});
  TestStyle& child = scene.style("child", "root");
  TestStyle& leaf = scene.style("leaf", "child");
  scene.style("hides", "root", {{size, 5}}).addObserver(nullptr);
  scene.style("below", "hides");
  StyleRecorder recorder(scene.log);
  struct : ZTSStyleObserver {
  } indifferent;
  for (TestStyle* style : {&root, &leaf}) {
    for (ZTSStyleObserver* each : std::initializer_list<ZTSStyleObserver*>{&indifferent, &recorder, &recorder})
      style->addObserver(each);  // counted, and told once
  }
  NotificationListener listener(ZTSStylePropertiesChangedNotification, nullptr, [&](const NSNotification& n) {
    const auto* change = dynamic_cast<const ZTSStyleChangeInfo*>(n.userInfoForKey(ZTSStyleNotificationChangeInfoKey));
    EXPECT_EQ(change->style(), n.object);
    scene.log.push_back("post " + change->style()->identifier().text() + " of " +
                        change->originalStyle()->identifier().text());
  });
  root.setValueForProperty(Value(2), size);
  EXPECT_EQ(std::exchange(scene.log, {}),
            (Log{"leaf: size<1", "post leaf of root", "post child of root", "root: size<1", "post root of root"}));
  child.setParentIdentifier("hides");  // a parent that differs tells like a change: all keys, the old parent's values
  EXPECT_EQ(scene.log, (Log{"leaf: size<2 weight< colour< list< label<", "post leaf of hides", "post child of hides"}));
  root.removeObserver(&recorder);
  leaf.removeObserver(&recorder);
  leaf.removeObserver(&recorder);
  scene.log.clear();
  root.setValueForProperty(Value(3), size);
  EXPECT_EQ(scene.log, (Log{"root: size<2", "post root of root"})) << "added twice, removed once";
}

TEST(PropagationTest, IgnoresWhatIsNotItsOwnNorItsParents) {
  Scene scene;
  TestStyle& root = scene.style("root");
  TestStyle& other = scene.style("other");
  StyleRecorder recorder(scene.log);
  root.addObserver(&recorder);
  const Ref<PropertySet> keys = PropertySet::with({size, PropertyKey("unknown")});
  root.stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperties(&other, *keys, nullptr));
  root.stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperty(&root, PropertyKey(), {}));
  root.stylePropertiesChanged(*ZTSStyleChangeInfo::init());
  EXPECT_EQ(scene.log, Log{});
  // No style stands for the parent of a style without one, and unknown properties end here.
  root.stylePropertiesChanged(
      *ZTSStyleChangeInfo::withStyleChangedProperties(nullptr, *keys, mapOf({{size, 4}}).get()));
  EXPECT_EQ(scene.log, Log{"root: size<4"});

  ZTUAssertionRecorder reports;
  root.addObserver(&root);
  EXPECT_EQ(reports.descriptions(), Log{format("Attempted to add self (%p) as own observer.", address(&root))});
  EXPECT_FALSE(root.observers().containsObject(&root));
  scene.remove(root);
  root.setValueForProperty(Value(1), size);
  EXPECT_EQ(scene.log.size(), 1u) << "a style without stylesheet tells nobody";
}

TEST(PropagationTest, LockedStylesKeepWhatChangedButForStylesOfOtherStylesheets) {
  Scene scene, elsewhere;
  TestAggregate& root = scene.style<TestAggregate>(
      "root", {}, {{size, 1}, {weight, 2}, {list, elsewhere.style("far")}, {label, scene.style("near")}});
  TestAggregate& locked = scene.style<TestAggregate>("locked", "root", {}, true);
  TestStyle& below = scene.style("below", "locked");
  StyleRecorder recorder(scene.log);
  below.addObserver(&recorder);
  root.setValuesForProperties(*mapOf({{size, 3}, {weight, 2.0}, {list, scene.style("n")}, {label, NSNull::null()}}));
  EXPECT_EQ(scene.log.size(), 1u) << "it is told, although little changed for it";
  EXPECT_EQ(valueOf(below, size), 1);
  EXPECT_TRUE(
      locked.overridePropertyMap()->isEqual(*mapOf({{size, 1}, {label, *scene.sheet->styleWithIdentifier("near")}})));
}

TEST(PropagationTest, ObserversAndListenersMayDoAnything) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}});
  Ref<ZTSStyle> child = make<TestStyle>({.identifier = "child", .parentIdentifier = "root"});
  scene.add(*child);
  TestStyle& last = scene.style("last", "root");
  StyleRecorder never(scene.log);
  auto leaves = std::make_unique<StyleRecorder>(scene.log);
  StyleRecorder joins(scene.log, [&](const ZTSStyleChangeInfo&) { root.addObserver(&never); });
  StyleRecorder removes(scene.log, [&](const ZTSStyleChangeInfo& change) {
    if (!leaves) return;
    root.removeObserver(leaves.get());  // it is not called any more: by then it is gone
    leaves.reset();
    scene.remove(*change.style());
  });
  StyleRecorder dropsSibling(scene.log, [&](const ZTSStyleChangeInfo&) {
    if (!child) return;
    scene.sheet->removeStyle(std::exchange(child, {}));
    scene.host.undo->removeAllActions();         // nobody holds the sibling any more but the one who tells
    last.setValueForProperty(Value(7), weight);  // a change inside the telling of another
  });
  TestStyle& first = scene.style("aFirst", "root");
  first.addObserver(&dropsSibling);
  last.addObserver(&dropsSibling);
  root.addObserver(&removes);
  root.addObserver(leaves.get());
  root.addObserver(&joins);
  root.setValueForProperty(Value(2), size);
  EXPECT_EQ(scene.log,
            (Log{"last: size<1", "last: weight<", "aFirst: size<1", "root: size<1", "last: size<2 colour< list< label<",
                 "aFirst: size<2 weight< colour< list< label<",  // orphaned
                 "root: size<1"}));
  EXPECT_EQ(root.stylesheet(), nullptr);
  EXPECT_TRUE(root.observers().containsObject(&never));

  // The stylesheet itself goes while its style is told.
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<TestStyle> kept = make<TestStyle>({.identifier = "kept"});
  sheet->addStyle(kept);
  StyleRecorder ends(scene.log, [&](const ZTSStyleChangeInfo&) { sheet.reset(); });
  kept->addObserver(&ends);
  int posts = 0;
  NotificationListener listener(ZTSStylePropertiesChangedNotification, kept.get(), [&](const NSNotification&) {
    ++posts;
    kept.reset();
  });
  kept->setValuesForProperties(*mapOf({{size, 1}}));
  EXPECT_EQ(posts, 1);
  EXPECT_EQ(sheet, nullptr);
  EXPECT_EQ(kept, nullptr);
}

TEST(PropagationTest, IsWholeAgainAfterAnException) {
  Scene scene;
  TestStyle& root = scene.style("root");
  TestStyle& child = scene.style("child", "root");
  bool throws = true;
  StyleRecorder throwing(scene.log, [&](const ZTSStyleChangeInfo&) {
    if (throws) throw std::runtime_error("no");
  });
  StyleRecorder recorder(scene.log);
  child.addObserver(&throwing);
  root.addObserver(&recorder);
  EXPECT_THROW(root.setValueForProperty(Value(1), size), std::runtime_error);
  EXPECT_EQ(NestingGuard::depth(Nesting::telling), 0u);
  EXPECT_EQ(valueOf(child, size), 1) << "the change itself stays";
  throws = false;
  scene.undo();
  EXPECT_EQ(scene.log, (Log{"child: size<", "root: size<", "child: size<1", "root: size<1"}));
}

TEST(PropagationTest, RecordsThatAreKeptStayAsTheyAre) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}});
  for (const char* child : {"a", "b", "c", "d", "e", "f"}) scene.style(child, "root");
  std::vector<Ref<NSObject>> kept;
  NotificationListener listener(ZTSStylePropertiesChangedNotification, nullptr, [&](const NSNotification& n) {
    NSObject* change = n.userInfoForKey(ZTSStyleNotificationChangeInfoKey);
    const std::string name = asStyle(n.object)->identifier().text();
    if (name == "b") kept.emplace_back(change);
    if (name == "d") kept.emplace_back(const_cast<NSDictionary*>(n.userInfo));
    scene.log.push_back(textOf(*dynamic_cast<const ZTSStyleChangeInfo*>(change)));
  });
  root.setValueForProperty(Value(2), size);
  EXPECT_EQ(scene.log,
            (Log{"a: size<1", "b: size<1", "c: size<1", "d: size<1", "e: size<1", "f: size<1", "root: size<1"}));
  EXPECT_EQ(textOf(dynamic_cast<ZTSStyleChangeInfo&>(*kept[0])), "b: size<1");
  NSObject* ofD = dynamic_cast<NSDictionary&>(*kept[1]).objectForKey(ZTSStyleNotificationChangeInfoKey);
  EXPECT_EQ(textOf(dynamic_cast<ZTSStyleChangeInfo&>(*ofD)), "d: size<1");
}

// ---- Classes that override what could be skipped

/// A class that overrides one operation and counts its calls.
template <class Self>
struct Counting : ZTSStyleOf<Self, TestStyle> {
  static constexpr const char* kClassName = "Counting";
  static inline int calls = 0;
};
struct Telling : Counting<Telling> {
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    ++calls, TestStyle::stylePropertiesChanged(change);
  }
};
struct Inspecting : Counting<Inspecting> {
  const PropertySet& inspectableProperties() const override { return ++calls, TestStyle::inspectableProperties(); }
};
struct Mapping : Counting<Mapping> {
  Ref<const PropertyMap> overridePropertyMap() const override { return ++calls, TestStyle::overridePropertyMap(); }
};
struct Undoing : Counting<Undoing> {
  NSUndoManager* undoManager() const override { return ++calls, TestStyle::undoManager(); }
};
struct Keeping : Counting<Keeping> {
  void lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags) override {
    EXPECT_EQ(flags, kZTSStyleNotifyOnRedo);
    ++calls, TestStyle::lockedStyleSetValuesForProperties(values, flags);
  }
};
struct Naming : ZTSStyleOf<Naming, TestStyle> {
  static constexpr const char* kClassName = "Naming";
  struct Class : ZTSStyleClassOf<Naming> {
    using ZTSStyleClassOf::ZTSStyleClassOf;
    NSNotificationName stylePropertiesChangedNotificationName() const override { return NSNotificationName("OwnName"); }
  };
};

template <class T>
int callsFor(bool locked, bool own = false) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}});
  T& leaf = scene.style<T>("leaf", "root", {}, locked);
  T::calls = 0;
  (own ? leaf : root).setValueForProperty(Value(2), size);
  return T::calls;
}

TEST(PropagationTest, CallsEveryOverriddenOperationThoughNobodyListens) {
  EXPECT_EQ(callsFor<Telling>(false), 1);
  EXPECT_EQ(callsFor<Inspecting>(false), 1);
  EXPECT_EQ(callsFor<Mapping>(false), 1);
  EXPECT_EQ(callsFor<Undoing>(true), 2) << "asked for the phase, then by the operation that keeps the look";
  EXPECT_EQ(callsFor<Keeping>(true), 1);
  EXPECT_EQ(callsFor<Telling>(false, true), 1) << "for its own changes too";
  Telling::calls = 0;
  make<Telling>()->setValueForProperty(Value(1), size);
  EXPECT_EQ(Telling::calls, 1) << "and while it is detached";

  Scene scene;
  TestStyle& root = scene.style("root");
  scene.style<Naming>("leaf", "root");
  NotificationListener listener(NSNotificationName("OwnName"), nullptr,
                                [&](const NSNotification&) { scene.log.push_back("own name"); });
  root.setValueForProperty(Value(2), size);
  EXPECT_EQ(scene.log, Log{"own name"});
}

struct Throwing : ZTSStyleOf<Throwing, TestStyle> {
  static constexpr const char* kClassName = "Throwing";
  void stylePropertiesChanged(const ZTSStyleChangeInfo&) override {
    if (isThrowing) throw NSGenericException("a child");
  }
  bool isThrowing = false;
};
struct Unkept : ZTSStyleOf<Unkept, TestStyle> {
  static constexpr const char* kClassName = "Unkept";
  void lockedStyleSetValuesForProperties(const PropertyMap&, std::int32_t) override {
    throw NSGenericException("a look");
  }
};

TEST(PropagationTest, TellsEverybodyWhateverIsThrownAndThrowsTheFirst) {
  Scene scene;
  TestStyle& root = scene.style("root");
  scene.style<Throwing>("throwing", "root").isThrowing = true;
  TestStyle& locked = scene.style<Unkept>("locked", "root", {}, true);
  TestStyle& below = scene.style("below", "locked");
  const auto raise = [](const ZTSStyleChangeInfo&) { throw NSGenericException("an observer"); };
  StyleRecorder quiet(scene.log), first(scene.log, raise), second(scene.log, raise);
  below.addObserver(&quiet);
  for (ZTSStyleObserver* observer : {&first, &second, &quiet}) root.addObserver(observer);
  locked.addObserver(&first);
  NotificationListener listener(ZTSStylePropertiesChangedNotification, &root,
                                [&](const NSNotification&) { scene.log.push_back("posted"); });
  try {
    root.setValueForProperty(Value(1), size);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.reason(), "a child");
  }
  EXPECT_EQ(scene.log, (Log{"below: size<", "locked: size<", "root: size<", "root: size<", "root: size<", "posted"}));
  EXPECT_EQ(valueOf(root, size), 1);
  scene.log.clear();
  root.removeObserver(&first), root.removeObserver(&second), locked.removeObserver(&first);
  EXPECT_THROW(root.removeValueForProperty(size), NSException);
  EXPECT_EQ(scene.log, (Log{"below: size<1", "root: size<1", "posted"}));
  for (ZTSStyle* style : {&root, &below, &locked}) style->removeObserver(&quiet);
}

/// Answers another set of keys, and drops the one that it answered, each time it is asked for its own map.
struct Shifting : ZTSStyleOf<Shifting, TestStyle> {
  static constexpr const char* kClassName = "Shifting";
  const PropertySet& inspectableProperties() const override { return *known; }
  Ref<const PropertyMap> overridePropertyMap() const override {
    holders = known->referenceCount();
    known = PropertySet::with({weight});
    return TestStyle::overridePropertyMap();
  }
  mutable Ref<PropertySet> known = PropertySet::with({size});
  mutable std::uint32_t holders = 0;
};

TEST(PropagationTest, HoldsTheKeysOfAClassWhileItsMapIsAskedFor) {
  Scene scene;
  TestStyle& root = scene.style("root");
  Shifting& leaf = scene.style<Shifting>("leaf", "root");
  StyleRecorder recorder(scene.log);
  leaf.addObserver(&recorder);
  leaf.known = PropertySet::with({size});
  root.setValueForProperty(Value(1), size);
  EXPECT_EQ(leaf.holders, 2u) << "the leaf and who tells it";
  EXPECT_EQ(scene.log, Log{"leaf: size<"});
  leaf.removeObserver(&recorder);
}

TEST(PropagationTest, FindsEachThatCanNoticeAmongQuietSiblings) {
  Scene scene;
  TestStyle& root = scene.style("root", {}, {{size, 1}});
  for (int each = 0; each < 3; ++each) scene.style(std::to_string(each), "root");
  TestStyle& locked = scene.style("locked", "root", {}, true);
  TestStyle& parent = scene.style("parent", "root");
  TestStyle& grandchild = scene.style("grandchild", "parent", {}, true);
  TestStyle& heard = scene.style("heard", "root");
  TestStyle& observed = scene.style("observed", "root");
  scene.style("last", "root");
  StyleRecorder recorder(scene.log);
  observed.addObserver(&recorder);
  NotificationListener listener(ZTSStylePropertiesChangedNotification, &heard,
                                [&](const NSNotification&) { scene.log.push_back("heard"); });
  root.setValueForProperty(Value(2), size);
  EXPECT_EQ(scene.log, (Log{"heard", "observed: size<1"}));
  EXPECT_EQ(valueOf(locked, size), 1);
  EXPECT_EQ(valueOf(grandchild, size), 1);
  EXPECT_EQ(valueOf(parent, size), 2);
  observed.removeObserver(&recorder);
}

TEST(PropagationTest, PassesThroughChainsOfAnyLength) {
  Scene plain, scene;
  StyleRecorder recorder(scene.log);
  // Far beyond what a call for each level would need of the stack.
  const std::vector<TestStyle*> styles = plain.chain(100'000);
  styles.back()->addObserver(&recorder);
  styles.front()->setValueForProperty(Value(1), size);
  EXPECT_EQ(std::exchange(scene.log, {}), Log{"99999: size<0"});

  const std::vector<Telling*> overriding = scene.chain<Telling>(kDeepestNesting + 1);
  overriding[1000]->addObserver(&recorder);
  scene.host.undo->disableUndoRegistration();
  EXPECT_THROW(overriding.front()->setValueForProperty(Value(1), size), NSInternalInconsistencyException);
  // Cut from below, so that no cut tells more levels than the larger frames of a sanitizer build allow.
  for (std::size_t cut = 10'000; cut >= 2'000; cut -= 2'000) overriding[cut]->setParentIdentifier("nobody");
  overriding[999]->setParentIdentifier("nobody");
  scene.log.clear();
  overriding[999]->setValueForProperty(Value(2), size);
  EXPECT_EQ(scene.log, Log{"1000: size<"}) << "right again after the exception";
}

// ---- Change records

/// A value that equals only itself and counts how often it is compared.
struct Compared : NSObject {
  bool isEqual(const NSObject* other) const override { return ++comparisons, other == this; }
  mutable int comparisons = 0;
};

TEST(ChangeInfoTest, ComparesEachKeyOncePerChange) {
  Scene scene;
  const Ref<Compared> was = make<Compared>();
  TestStyle& root = scene.style("root", {}, {{size, Ref<NSObject>(was)}, {weight, 1}});
  TestStyle& child = scene.style("child", "root");
  root.p_setValueForProperty(make<Compared>(), size);
  const Ref<ZTSStyleChangeInfo> change = ZTSStyleChangeInfo::withStyleChangedProperties(
      &root, *PropertySet::with({size, weight, colour}), mapOf({{size, Ref<NSObject>(was)}, {weight, 1.0}}).get());
  EXPECT_EQ(change->unchangedPropertyMapForProperties(*PropertySet::with({list})), nullptr);
  const auto text = [](const ZTSStyleChangeInfo& info) {
    const Ref<PropertyMap> map =
        info.unchangedPropertyMapForProperties(*PropertySet::with({size, weight, colour, list}));
    return map ? std::to_string(map->count()) + (map->find(size) != nullptr ? " size" : "") : "none";
  };
  EXPECT_EQ(text(*change), "1 size") << "the weight is equal as a number, the colour had no value";
  root.p_setValueForProperty(was, size);
  EXPECT_EQ(text(*change), "1 size") << "remembered";
  const Ref<ZTSStyleChangeInfo> cascaded =
      ZTSStyleChangeInfo::cascadedFrom(change.get(), &child, PropertySet::with({size}));
  EXPECT_EQ(text(*cascaded), "1 size");
  EXPECT_EQ(was->comparisons, 1);
  EXPECT_EQ(cascaded->style(), &child);
  EXPECT_EQ(cascaded->originalStyle(), &root);
  EXPECT_EQ(cascaded->originalChangedProperties(), change->changedProperties());
  EXPECT_EQ(cascaded->oldPropertyMap(), change->oldPropertyMap());
}

TEST(ChangeInfoTest, SaysWhatItIsAndRefusesToComeFromNothing) {
  EXPECT_EQ(ZTSStyleChangeInfo::init()->unchangedPropertyMapForProperties(*PropertySet::with({size})), nullptr);
  Scene scene;
  TestStyle& root = scene.style("root");
  const Ref<ZTSStyleChangeInfo> change = ZTSStyleChangeInfo::withStyleChangedProperty(&root, size, {});
  EXPECT_TRUE(change->oldPropertyMap()->isEmpty());
  EXPECT_EQ(change->unchangedPropertyMapForProperties(*PropertySet::with({size})), nullptr);
  EXPECT_EQ(change->description(),
            format("<ZTSStyleChangeInfo %p \n\tstyle=%p \n\toriginalStyle=%p \n\tchangedProperties={(size)} "
                   "\n\toriginalChangedProperties={(size)} \n\tequalValuedProperties={(size)} "
                   "\n\tunequalValuedProperties=(null) "
                   "\n\toldPropertyMap={} \n\tunchangedVariation=0x0\n>",
                   change, address(&root), address(&root)));
  EXPECT_EQ(ZTSStyleChangeInfo::init()->unchangedVariation(), nullptr);
  const char* const text =
      "-\\[ZTSStyleChangeInfo initCascadedFromStyleChangeInfo:withStyle:changedProperties:\\] -- Failed to initialize "
      "<0x[0-9a-f]+> from nil ZTWPStyleChangeInfo\\.";
  EXPECT_THAT([&] { ZTSStyleChangeInfo::cascadedFrom(nullptr, &root, {}); },
              ::testing::Throws<NSInternalInconsistencyException>(
                  ::testing::Property(&NSException::reason, ::testing::MatchesRegex(text))));
}

}  // namespace
}  // namespace zt::testing
