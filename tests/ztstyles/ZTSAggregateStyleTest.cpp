// SPDX-License-Identifier: MIT

// Aggregates: what they answer, observe and count.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::size_t observations(const ZTSStyle& referenced, ZTSStyle& by) {
  return referenced.observers().countForObject(&by);
}
using State = std::vector<std::size_t>;
/// How often the aggregate observes the style, and the style's uses.
State stateOf(const ZTSStyle& referenced, ZTSStyle& by) {
  return {observations(referenced, by), referenced.usageCount()};
}
std::vector<ZTSStyle*> members(const std::optional<ZTSStyleSet>& set) {
  return set ? set->allObjects() : std::vector<ZTSStyle*>{nullptr};
}

/// Has stand-ins for missing styles, and asks for its own description while that is being built.
class TalkingAggregate : public ZTSStyleOf<TalkingAggregate, TestAggregate> {
 public:
  static constexpr const char* kClassName = "TalkingAggregate";
  Ref<NSObject> defaultValueForNilStyleProperty(PropertyKey key) const override {
    ++asked;
    return key == label ? standIn : Ref<NSObject>();
  }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    if (nested == "ask") nested = "", nested = description();
    return TestAggregate::referencedStyleProperties();
  }
  Ref<NSObject> standIn;
  mutable std::string nested;
  mutable int asked = 0;
};

TEST(AggregateTest, PassesItsOrphanCountOnInsideAStylesheetAndLogsOneUseTooFew) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestAggregate& a = scene.detached<TestAggregate>("a", {}, {{list, r}, {label, r}});
  a.incrementOrphanCount();
  EXPECT_EQ(r.orphanCount(), 0u);
  scene.sheet->addStyle(Ref<ZTSStyle>(&a));
  EXPECT_EQ(r.orphanCount(), 2u);
  a.decrementOrphanCount();
  EXPECT_EQ(r.orphanCount(), 0u);
  EXPECT_THROW(a.decrementOrphanCount(), NSInternalInconsistencyException);
  ZTULogRecorder log;
  ZTUAssertionRecorder reports;
  a.decrementUsageCount();
  ASSERT_EQ(log.entries().size(), 1u);
  EXPECT_EQ(log.entries()[0].level, 10);
  EXPECT_TRUE(log.entries()[0].message.ends_with("whose usage count is 0."));
  EXPECT_THAT(reports.reports(), IsEmpty());
}

TEST(AggregateTest, KeepsItsCountsWhenAChangeIsRefused) {
  Scene scene;
  TestStyle& r1 = scene.style("r1");
  TestStyle& r2 = scene.style("r2");
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, r1}, {label, r1}});
  a.incrementUsageCount();
  for (const Ref<PropertyMap>& refused :
       {mapOf({{list, r2}, {label, r2}, {size, -1}}), mapOf({{label, r2}, {list, 3}}), mapOf({{list, 3}})}) {
    std::string reason;
    try {
      refused->count() == 1 ? a.setValueForProperty(Value(3), list) : a.setValuesForProperties(*refused);
    } catch (const NSInternalInconsistencyException& exception) {
      reason = exception.reason();
    }
    if (refused->contains(size)) {
      EXPECT_NE(reason, "");
    } else {
      EXPECT_EQ(reason, "not a style");
    }
  }
  EXPECT_EQ(stateOf(r1, a), (State{2, 2}));
  EXPECT_EQ(stateOf(r2, a), (State{0, 0}));

  // What is stored without a look is reported when it is read, and keeps nobody from leaving.
  EXPECT_THROW(a.lockedStyleSetValuesForProperties(*mapOf({{list, "text"}}), 0), NSInternalInconsistencyException);
  EXPECT_THROW(a.referencedStyles(), NSInternalInconsistencyException);
  const Ref<TestAggregate> kept(&a);
  ZTULogRecorder log;
  scene.sheet.reset();
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_EQ(stateOf(r1, a), (State{0, 0}));
}

/// Changes the aggregate again when it is told of a change.
struct Meddler : ZTSStyleObserver {
  void stylePropertiesChanged(const ZTSStyleChangeInfo&) override {
    if (auto action = std::exchange(then, nullptr)) action();
  }
  std::function<void()> then;
};

TEST(AggregateTest, CountsRightWhenThoseWhoAreToldChangeItAgain) {
  Scene scene;
  TestStyle& r1 = scene.style("r1");
  TestStyle& r2 = scene.style("r2");
  TestStyle& r3 = scene.style("r3");
  scene.style("base", {}, {{size, 7}});
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, r1}});
  a.incrementUsageCount();
  Meddler meddler;
  a.addObserver(&meddler);
  const auto uses = [&] { return State{r1.usageCount(), r2.usageCount(), r3.usageCount(), observations(r3, a)}; };

  meddler.then = [&] { a.setValueForProperty(Value(r3), list); };
  a.setValueForProperty(Value(r2), list);
  EXPECT_THAT(uses(), ElementsAre(0, 0, 1, 1));
  meddler.then = [&] { a.setValueForProperty(Value(r1), list); };
  a.removeValueForProperty(list);
  EXPECT_THAT(uses(), ElementsAre(1, 0, 0, 0));
  meddler.then = [&] { a.incrementUsageCount(); };
  a.decrementUsageCount();
  a.setValueForProperty(Value(r3), list);
  EXPECT_THAT(uses(), ElementsAre(0, 0, 1, 1));
  // On entering, the parent is found and the change is told before the references are observed.
  scene.sheet->removeStyle(Ref<ZTSStyle>(&a));
  a.setParentIdentifier("base");
  meddler.then = [&] { scene.sheet->removeStyle(Ref<ZTSStyle>(&a)); };
  scene.sheet->addStyle(Ref<ZTSStyle>(&a));
  EXPECT_THAT(uses(), ElementsAre(0, 0, 0, 0));
  // A document that goes meanwhile.
  scene.sheet->addStyle(Ref<ZTSStyle>(&a));
  scene.host.undo->removeAllActions();
  ZTUAssertionRecorder reports;
  meddler.then = [&] { scene.sheet.reset(); };
  scene.host.undo->disableUndoRegistration();
  a.setValueForProperty(Value(r2), list);
  EXPECT_EQ(a.stylesheet(), nullptr);
  EXPECT_THAT(uses(), ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(reports.descriptions(), IsEmpty());
  a.removeObserver(&meddler);
}

TEST(AggregateTest, CountsAreFiniteInCycles) {
  Scene scene;
  TestAggregate& a = scene.style<TestAggregate>("a");
  TestAggregate& b = scene.style<TestAggregate>("b", {}, {{list, a}});
  a.setValueForProperty(Value(b), list);
  a.setValueForProperty(Value(a), label);
  EXPECT_THAT(members(a.referencedStyles()), ElementsAre(&b));
  EXPECT_THAT(members(a.recursivelyReferencedStyles()), ElementsAre(&b));
  a.incrementUsageCount();
  EXPECT_EQ(a.usageCount(), 1u);
  EXPECT_EQ(b.usageCount(), 1u);
  a.decrementUsageCount();
  EXPECT_EQ(a.usageCount() + b.usageCount(), 0u);
  a.incrementOrphanCount();  // nothing guards these: the step comes back once
  EXPECT_EQ(a.orphanCount(), 2u);
  EXPECT_EQ(b.orphanCount(), 1u);
}

/// A root that refers to a style, and a child that refers explicitly to none.
struct TalkingScene {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestStyle& standIn = scene.style("standIn");
  TalkingAggregate& root = scene.style<TalkingAggregate>("root", {}, {{list, r}});
  TalkingAggregate& child = scene.style<TalkingAggregate>("child", "root", {{list, NSNull::null()}});
};

TEST(AggregateTest, RefersToWhatItsOwnValuesNameAndLeavesAParentsReferencesToTheParent) {
  TalkingScene play;
  EXPECT_EQ(play.child.valueForProperty(list), nullptr);
  EXPECT_THAT(members(play.child.referencedStyles()), IsEmpty());
  play.child.removeValueForProperty(list);
  EXPECT_EQ(play.child.valueForProperty(list), &play.r);
  EXPECT_THAT(members(play.child.referencedStyles()), IsEmpty());
  EXPECT_THAT(members(play.root.referencedStyles()), ElementsAre(&play.r));
  EXPECT_EQ(TestStyle::styleClass().makeStyle()->referencedStyles(), std::nullopt);
}

TEST(AggregateTest, AsksForAStandInWhereNobodyHasAValueTheRootFirst) {
  TalkingScene play;
  EXPECT_EQ(play.child.valueForProperty(label), nullptr);
  EXPECT_EQ(play.child.implicitlyReferencedStyles(), std::nullopt);
  play.root.standIn.reset(&play.standIn);
  play.child.asked = 0;
  EXPECT_EQ(play.child.valueForProperty(label), &play.standIn);
  EXPECT_EQ(play.child.asked, 0) << "the root has answered";
  EXPECT_EQ(play.child.valueForProperty(size), nullptr);
  EXPECT_EQ(play.child.asked, 1);
  EXPECT_THAT(members(play.root.implicitlyReferencedStyles()), ElementsAre(&play.standIn));
}

TEST(AggregateTest, HoldsAllItsReferencesStronglyUnlessItsClassSaysOtherwise) {
  const TalkingScene play;
  EXPECT_EQ(play.child.strongReferencedStyleProperties(), play.child.referencedStyleProperties());
  EXPECT_THAT(play.child.weakReferencedStyleProperties(), IsEmpty());
}

TEST(AggregateTest, DescribesItselfBrieflyWhileItIsBeingDescribed) {
  TalkingScene play;
  play.child.nested = "ask";
  EXPECT_THAT(play.child.description(), ::testing::EndsWith("; referencedStyles=(list, label)>"));
  EXPECT_EQ(play.child.nested, format("<%s %p>", "TalkingAggregate", address(&play.child)));
}

TEST(AggregateTest, LetsGoOfAncestorsStylesWhenItsStylesheetDies) {
  Scene above;
  TestStyle& shared = above.style("shared");
  Ref<TestAggregate> survivor;
  {
    Scene scene(above.sheet.get());
    survivor.reset(&scene.style<TestAggregate>("a", {}, {{list, shared}}));
    survivor->incrementUsageCount();
    EXPECT_EQ(stateOf(shared, *survivor), (State{1, 1}));
  }
  EXPECT_EQ(survivor->stylesheet(), nullptr);
  EXPECT_EQ(stateOf(shared, *survivor), (State{0, 0}));
}

/// A class with a counting operation of its own.
class CallingAggregate : public ZTSStyleOf<CallingAggregate, TestAggregate> {
 public:
  static constexpr const char* kClassName = "CallingAggregate";
  void incrementUsageCount() override {
    ++calls;
    TestAggregate::incrementUsageCount();
  }
  int calls = 0;
};

template <class T>
std::vector<T*> chainOf(Scene& scene, int length) {
  std::vector<T*> chain{&scene.style<T>({})};
  while (static_cast<int>(chain.size()) < length) chain.push_back(&scene.style<T>({}, {}, {{list, *chain.back()}}));
  return chain;
}

TEST(AggregateTest, CountsLongChainsAndEndsTooDeepOnesInAnException) {
  ZTULogRecorder log;  // the interrupted step leaves counts behind that nobody gave
  Scene scene;
  const auto chain = chainOf<TestAggregate>(scene, 50'000);
  chain.back()->incrementUsageCount();
  EXPECT_EQ(chain.front()->usageCount(), 1u);
  EXPECT_EQ(chain.back()->recursivelyReferencedStyles()->count(), chain.size() - 1);
  chain.back()->decrementUsageCount();
  EXPECT_EQ(chain.front()->usageCount(), 0u);

  const auto calling = chainOf<CallingAggregate>(scene, 12'000);
  calling[3'000]->incrementUsageCount();
  EXPECT_EQ(calling.front()->calls, 1);
  calling[3'000]->decrementUsageCount();
  EXPECT_THROW(calling.back()->incrementUsageCount(), NSInternalInconsistencyException);
  // Nobody is left in the middle of passing on.
  CallingAggregate& end = *calling.back();
  const std::uint32_t before = end.usageCount();
  end.incrementUsageCount();
  EXPECT_EQ(end.usageCount(), before + 1);
}

// ---- Against a slow model

/// Throws when it is told to count or to be observed, as often as asked to.
class Refusing : public ZTSStyleOf<Refusing, TestStyle> {
 public:
  static constexpr const char* kClassName = "Refusing";
  void incrementUsageCount() override { perhaps(), TestStyle::incrementUsageCount(); }
  void decrementUsageCount() override { perhaps(), TestStyle::decrementUsageCount(); }
  void addObserver(ZTSStyleObserver* observer) override { perhaps(), TestStyle::addObserver(observer); }
  void removeObserver(ZTSStyleObserver* observer) override { perhaps(), TestStyle::removeObserver(observer); }
  int calls = 0;
  int failing = -1;  // the call, counted from 0, that throws

 private:
  void perhaps() {
    if (calls++ == failing) throw std::runtime_error("refused");
  }
};

TEST(AggregateTest, GivesBackExactlyWhatItGaveWhicheverCallThrows) {
  for (int failing = 0; failing < 8; ++failing) {
    SCOPED_TRACE(failing);
    Scene scene;
    Refusing& r = scene.style<Refusing>("r");
    TestStyle& other = scene.style("other");
    TestAggregate& a = scene.style<TestAggregate>("a");
    a.incrementUsageCount();
    r.failing = failing;
    int thrown = 0;
    const auto trying = [&](auto change) {
      try {
        change();
      } catch (const std::runtime_error&) {
        ++thrown;
      }
    };
    trying([&] { a.setValuesForProperties(*mapOf({{list, r}, {label, other}})); });
    EXPECT_EQ(stateOf(other, a), (State{1, 1}));
    trying([&] { a.decrementUsageCount(); });
    trying([&] { a.incrementUsageCount(); });
    trying([&] { a.setValueForProperty(Value(r), list); });
    a.setValueForProperty(Value(1), size);  // any change tries again what was not reached
    EXPECT_EQ(stateOf(r, a), (State{1, 1}));
    trying([&] { a.removeValueForProperty(list); });
    trying([&] { a.removeValueForProperty(label); });
    trying([&] { a.setValueForProperty(nullptr, list); });
    EXPECT_EQ(stateOf(r, a), (State{0, 0}));
    EXPECT_EQ(thrown, r.calls > failing ? 1 : 0);
    EXPECT_TRUE(scene.sheet->indexesAreRight());
  }
}

/// Does something when it is used.
class Used : public ZTSStyleOf<Used, TestStyle> {
 public:
  static constexpr const char* kClassName = "Used";
  void incrementUsageCount() override {
    TestStyle::incrementUsageCount();
    if (whenUsed) std::exchange(whenUsed, {})();
  }
  std::function<void()> whenUsed;
};

TEST(AggregateTest, GivesAUnitBackLaterThatTheStyleIgnoredToTake) {
  Scene scene;
  Used& used = scene.style<Used>("used");
  TestAggregate& r = scene.style<TestAggregate>("r", {}, {{list, used}});
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, r}});
  // While r passes its use on, it ignores that it is taken back.
  used.whenUsed = [&] { a.removeValueForProperty(list); };
  a.incrementUsageCount();
  EXPECT_EQ(stateOf(r, a), (State{0, 1}));
  EXPECT_TRUE(scene.sheet->indexesAreRight());
  a.setValueForProperty(Value(1), size);  // any change tries again
  EXPECT_EQ(stateOf(r, a), (State{0, 0}));
  EXPECT_EQ(used.usageCount(), 0u);
  EXPECT_TRUE(a.p_references().empty());
}

TEST(AggregateTest, AValueThatIsNoStyleCanBeReplacedRemovedAndPutBack) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestAggregate& a = scene.style<TestAggregate>("a");
  EXPECT_THROW(a.lockedStyleSetValuesForProperties(*mapOf({{list, "text"}}), 0), NSInternalInconsistencyException);
  NSUndoManager& undo = *scene.host.undo;
  undo.removeAllActions();
  const auto undone = [&](auto change) {
    change();
    undo.undo();
    EXPECT_EQ(a.p_overrideValueForProperty(list)->description(), "text");
  };
  undone([&] { a.setValueForProperty(Value(r), list); });
  undone([&] { a.removeValueForProperty(list); });
  EXPECT_EQ(stateOf(r, a), (State{0, 0}));
}

}  // namespace
}  // namespace zt::testing
