// Aggregates: what they answer, observe and count.

#include "Scene.h"

#include <platform/NSException.h>

#include <random>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::size_t observations(const ZTSStyle& referenced, ZTSStyle& by) {
  return referenced.observers().countForObject(&by);
}
std::vector<ZTSStyle*> members(const std::optional<ZTSStyleSet>& set) {
  return set ? set->allObjects() : std::vector<ZTSStyle*>{nullptr};
}

/// Has stand-ins for missing styles, and asks for its own description while that is being built.
class TalkingAggregate : public TestAggregate {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<TalkingAggregate>("TalkingAggregate", TestAggregate::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
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

TEST(AggregateTest, ObservesAndCountsOnlyInsideAStylesheetOncePerProperty) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestAggregate& a = scene.detached<TestAggregate>("a", {}, {{list, r}});
  a.setValueForProperty(Value(r), label);
  for (int i = 0; i < 3; ++i) a.incrementUsageCount();
  a.incrementOrphanCount();
  EXPECT_EQ(observations(r, a) + r.usageCount() + r.orphanCount(), 0u);

  scene.sheet->addStyle(Ref<ZTSStyle>(&a));
  EXPECT_EQ(observations(r, a), 2u);
  EXPECT_EQ(r.usageCount(), 2u);
  EXPECT_EQ(r.orphanCount(), 2u);
  a.decrementOrphanCount();
  for (int i = 0; i < 3; ++i) a.decrementUsageCount();
  EXPECT_EQ(r.usageCount() + r.orphanCount(), 0u);
  EXPECT_EQ(observations(r, a), 2u);

  a.incrementUsageCount();
  scene.sheet->removeStyle(Ref<ZTSStyle>(&a));
  EXPECT_EQ(observations(r, a) + r.usageCount(), 0u);
  scene.undo();  // one group for each step outside of groups: the removal
  EXPECT_EQ(observations(r, a), 2u);
  EXPECT_EQ(r.usageCount(), 2u);
  ZTULogRecorder log;
  ZTUAssertionRecorder reports;
  a.decrementUsageCount();
  a.decrementUsageCount();
  ASSERT_EQ(log.entries().size(), 1u);
  EXPECT_EQ(log.entries()[0].level, 10);
  EXPECT_THAT(log.entries()[0].text(), HasSubstr("whose usage count is 0."));
  EXPECT_THAT(reports.reports(), IsEmpty());
  EXPECT_THROW(a.decrementOrphanCount(), NSInternalInconsistencyException);
}

TEST(AggregateTest, MovesCountsAndObservationWithEveryKindOfChangeAndItsUndo) {
  Scene scene;
  TestStyle& r1 = scene.style("r1");
  TestStyle& r2 = scene.style("r2");
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, r1}});
  a.incrementUsageCount();
  const auto state = [&] {
    return std::vector<std::size_t>{r1.usageCount(), observations(r1, a), r2.usageCount(), observations(r2, a)};
  };
  const std::vector<std::size_t> before{1, 1, 0, 0};
  struct Change {
    const char* name;
    std::function<void()> perform;
    std::vector<std::size_t> after;
  };
  const Ref<PropertyMap> both = mapOf({{list, r2}, {label, r2}, {size, 3}});
  const Ref<PropertySet> keys = PropertySet::with({list, label});
  const Change changes[] = {
      {"set", [&] { a.setValueForProperty(Value(r2), list); }, {0, 0, 1, 1}},
      {"set to itself", [&] { a.setValueForProperty(Value(a), list); }, {0, 0, 0, 0}},
      {"set to none", [&] { a.setValueForProperty({}, list); }, {0, 0, 0, 0}},
      {"set many", [&] { a.setValuesForProperties(*both); }, {0, 0, 2, 2}},
      {"remove", [&] { a.removeValueForProperty(list); }, {0, 0, 0, 0}},
      {"remove many", [&] { a.removeValuesForProperties(*keys); }, {0, 0, 0, 0}},
      {"set locked", [&] { a.lockedStyleSetValuesForProperties(*both, kZTSStyleNotifyOnRedo); }, {0, 0, 2, 2}},
      {"remove locked", [&] { a.lockedStyleRemoveValuesForProperties(*keys, 0); }, {0, 0, 0, 0}},
      {"replace", [&] { r1.replaceWithStyle(&r2); }, {0, 0, 1, 1}},
  };
  for (const Change& change : changes) {
    SCOPED_TRACE(change.name);
    ASSERT_EQ(state(), before);
    scene.host.undo->performInGroup(change.perform);
    EXPECT_EQ(state(), change.after);
    scene.undo();
    EXPECT_EQ(state(), before);
    scene.redo();
    EXPECT_EQ(state(), change.after);
    scene.undo();
  }
  a.unconditionalRemoveValueForProperty(list);
  EXPECT_EQ(state(), (std::vector<std::size_t>{0, 0, 0, 0}));
}

TEST(AggregateTest, KeepsItsCountsWhenAChangeIsRefused) {
  Scene scene;
  TestStyle& r1 = scene.style("r1");
  TestStyle& r2 = scene.style("r2");
  TestAggregate& a = scene.style<TestAggregate>("a", {}, {{list, r1}, {label, r1}});
  a.incrementUsageCount();
  const Ref<PropertyMap> refused = mapOf({{list, r2}, {label, r2}, {size, -1}});
  const Ref<PropertyMap> noStyle = mapOf({{label, r2}, {list, 3}});
  EXPECT_THROW(a.setValuesForProperties(*refused), NSInternalInconsistencyException);
  try {
    a.setValuesForProperties(*noStyle);
    ADD_FAILURE() << "a number was taken for a style";
  } catch (const NSInternalInconsistencyException& exception) {
    EXPECT_EQ(exception.reason(), "not a style");
  }
  EXPECT_THROW(a.setValueForProperty(Value(3), label), NSInternalInconsistencyException);
  EXPECT_THAT((std::vector<std::size_t>{r1.usageCount(), observations(r1, a), r2.usageCount(), observations(r2, a)}),
              ElementsAre(2, 2, 0, 0));

  // What is stored without a look is reported when it is read, and keeps nobody from leaving.
  a.lockedStyleSetValuesForProperties(*mapOf({{size, 2}}), 0);
  EXPECT_THROW(a.lockedStyleSetValuesForProperties(*mapOf({{list, "text"}}), 0), NSInternalInconsistencyException);
  EXPECT_THROW(a.referencedStyles(), NSInternalInconsistencyException);
  const Ref<TestAggregate> kept(&a);
  ZTULogRecorder log;
  scene.sheet.reset();
  EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("could not let go of what its property list refers to.")));
  EXPECT_EQ(observations(r1, a), 0u);
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
  const auto uses = [&] {
    return std::vector<std::size_t>{r1.usageCount(), r2.usageCount(), r3.usageCount(), observations(r3, a)};
  };

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
  a.removeObserver(&meddler);
}

TEST(AggregateTest, CountsAreFiniteInCycles) {
  Scene scene;
  TestAggregate& a = scene.style<TestAggregate>("a");
  TestAggregate& b = scene.style<TestAggregate>("b", {}, {{list, a}});
  a.setValueForProperty(Value(b), list);
  a.setValueForProperty(Value(a), label);
  a.incrementUsageCount();
  EXPECT_EQ(a.usageCount(), 1u);
  EXPECT_EQ(b.usageCount(), 1u);
  EXPECT_EQ(observations(a, a), 0u);
  EXPECT_THAT(members(a.referencedStyles()), ElementsAre(&b));
  EXPECT_THAT(members(a.recursivelyReferencedStyles()), ElementsAre(&b));
  a.decrementUsageCount();
  EXPECT_EQ(a.usageCount() + b.usageCount(), 0u);
  a.incrementOrphanCount();  // nothing guards these: the step comes back once
  EXPECT_EQ(a.orphanCount(), 2u);
  EXPECT_EQ(b.orphanCount(), 1u);
}

TEST(AggregateTest, AnswersValuesReferencesAndStandIns) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestStyle& standIn = scene.style("standIn");
  TalkingAggregate& root = scene.style<TalkingAggregate>("root", {}, {{list, r}});
  TalkingAggregate& child = scene.style<TalkingAggregate>("child", "root", {{list, NSNull::null()}});
  EXPECT_EQ(child.valueForProperty(list), nullptr);
  EXPECT_EQ(child.valueForProperty(label), nullptr);
  EXPECT_THAT(members(child.referencedStyles()), IsEmpty());
  EXPECT_EQ(child.implicitlyReferencedStyles(), std::nullopt);
  root.standIn.reset(&standIn);
  child.asked = 0;
  EXPECT_EQ(child.valueForProperty(label), &standIn);  // the root's answer comes first
  EXPECT_EQ(child.asked, 0);
  EXPECT_EQ(child.valueForProperty(size), nullptr);
  EXPECT_EQ(child.asked, 1);
  EXPECT_THAT(members(root.implicitlyReferencedStyles()), ElementsAre(&standIn));
  // Only own values are references; what a parent refers to is the parent's.
  child.removeValueForProperty(list);
  EXPECT_EQ(child.valueForProperty(list), &r);
  EXPECT_THAT(members(child.referencedStyles()), IsEmpty());
  EXPECT_EQ(TestStyle::styleClass().makeStyle()->referencedStyles(), std::nullopt);
  EXPECT_EQ(child.strongReferencedStyleProperties(), child.referencedStyleProperties());
  EXPECT_THAT(child.weakReferencedStyleProperties(), IsEmpty());

  child.nested = "ask";
  const std::string text = child.description();
  EXPECT_TRUE(text.ends_with("; referencedStyles=(list, label)>")) << text;
  EXPECT_EQ(child.nested, format("<%s %p>", "TalkingAggregate", address(&child)));
}

TEST(AggregateTest, LetsGoOfAncestorsStylesWhenItsStylesheetDies) {
  Scene above;
  TestStyle& shared = above.style("shared");
  Ref<TestAggregate> survivor;
  {
    Scene scene(above.sheet.get());
    survivor.reset(&scene.style<TestAggregate>("a", {}, {{list, shared}}));
    survivor->incrementUsageCount();
    EXPECT_EQ(shared.usageCount(), 1u);
  }
  EXPECT_EQ(survivor->stylesheet(), nullptr);
  EXPECT_EQ(shared.usageCount(), 0u);
  EXPECT_TRUE(shared.observers().isEmpty());
}

/// A class with a counting operation of its own.
class CallingAggregate : public TestAggregate {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<CallingAggregate>("CallingAggregate", TestAggregate::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
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

/// The counting as it is told, in calls.
struct Modelled {
  ZTSStyle* real = nullptr;
  bool isAggregate = false;
  bool isInside = true;
  bool isLinked = true;  // to its parent
  bool isAdjusting = false;
  std::uint32_t uses = 0;
  Modelled* parent = nullptr;
  Modelled* references[2] = {nullptr, nullptr};

  void step(bool up) {
    if (isAggregate && isAdjusting) return;
    if (!up && uses == 0) return;
    uses += up ? 1u : ~0u;
    if (uses == (up ? 1 : 0) && parent != nullptr && isLinked) parent->step(up);
    if (!isAggregate || uses != (up ? 1 : 0)) return;
    isAdjusting = true;
    for (Modelled* referenced : references) {
      if (referenced != nullptr && referenced != this && isInside) referenced->step(up);
    }
    isAdjusting = false;
  }
  void observe(int property, bool begin) {
    if (references[property] != nullptr && references[property] != this && isInside && uses != 0)
      references[property]->step(begin);
  }
  void refer(int property, Modelled* to) {
    observe(property, false);
    references[property] = to;
    observe(property, true);
  }
  void move(bool inside) {
    for (int property : {0, 1}) observe(property, false);
    isInside = inside;
    if (inside) isLinked = true;
    if (parent != nullptr && uses != 0) parent->step(inside);
    isLinked = inside;
    for (int property : {0, 1}) observe(property, true);
  }
};

TEST(AggregateTest, AgreesWithASlowModelOverRandomReferencesAndCycles) {
  const PropertyKey keys[] = {list, label};
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    ZTULogRecorder log;
    ZTUAssertionRecorder reports;
    Scene scene;
    std::deque<Modelled> styles(24);
    for (std::size_t i = 0; i < styles.size(); ++i) {
      Modelled& style = styles[i];
      const std::string identifier = "s" + std::to_string(i);
      style.isAggregate = below(4) != 0;
      if (i >= 4 && below(2) == 0) style.parent = &styles[below(4)];
      const StringRef parent = style.parent != nullptr ? style.parent->real->identifier() : StringRef();
      style.real = style.isAggregate ? static_cast<ZTSStyle*>(&scene.style<TestAggregate>(identifier.c_str(), parent))
                                     : &scene.style<TestStyle>(identifier.c_str(), parent);
    }
    std::vector<std::tuple<Modelled*, int, Modelled*>> undone;  // what each group takes back
    for (int i = 0; i < 400; ++i) {
      const std::size_t which = below(styles.size());
      Modelled& style = styles[which];
      const int property = static_cast<int>(below(2));
      switch (below(7)) {
        case 0:
        case 1:
          style.step(true);
          style.real->incrementUsageCount();
          break;
        case 2:
          style.step(false);
          style.real->decrementUsageCount();
          break;
        case 3:
        case 4: {
          if (!style.isAggregate) break;
          Modelled* const to = below(4) == 0 ? nullptr : &styles[below(styles.size())];
          if (style.isInside) undone.emplace_back(&style, property, style.references[property]);
          style.refer(property, to);
          style.real->setValueForProperty(to != nullptr ? Ref<NSObject>(to->real) : Ref<NSObject>(), keys[property]);
          break;
        }
        case 5: {
          if (undone.empty()) break;
          const auto [undoneStyle, undoneProperty, before] = undone.back();
          undone.pop_back();
          undoneStyle->refer(undoneProperty, before);
          scene.undo();
          break;
        }
        default:
          if (which < 4) break;  // the parents stay
          scene.host.undo->disableUndoRegistration();
          style.isInside ? scene.sheet->removeStyle(Ref<ZTSStyle>(style.real))
                         : scene.sheet->addStyle(Ref<ZTSStyle>(style.real));
          scene.host.undo->enableUndoRegistration();
          style.move(!style.isInside);
      }
      for (const Modelled& one : styles) {
        ASSERT_EQ(one.real->usageCount(), one.uses) << "step " << i;
        std::size_t observers = 0;
        for (Modelled& other : styles) {
          const std::size_t expected =
              !other.isInside || &other == &one
                  ? 0
                  : static_cast<std::size_t>(std::count(other.references, other.references + 2, &one));
          ASSERT_EQ(observations(*one.real, *other.real), expected) << "step " << i;
          observers += expected != 0;
        }
        ASSERT_EQ(one.real->observers().count(), observers);
      }
    }
  }
}

}  // namespace
}  // namespace zt::testing
