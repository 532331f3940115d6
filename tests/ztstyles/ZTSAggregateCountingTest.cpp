// SPDX-License-Identifier: MIT

// What aggregates count over random references, and in circles, against a slow model of the counting.

#include "Scene.h"

#include <random>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

using State = std::vector<std::size_t>;
std::size_t observations(const ZTSStyle& referenced, ZTSStyle& by) {
  return referenced.observers().countForObject(&by);
}

/// The counting as it is told, in calls, where nothing refers in a circle.
struct Modelled {
  ZTSStyle* real = nullptr;
  bool isAggregate = false;
  bool isInside = true;
  bool isLinked = true;  // to its parent
  std::uint32_t uses = 0;
  std::uint32_t own = 0;  // of them, the application's
  Modelled* parent = nullptr;
  Modelled* references[2] = {nullptr, nullptr};

  void step(bool up) {
    uses += up ? 1u : ~0u;
    if (uses != (up ? 1 : 0)) return;
    if (parent != nullptr && isLinked) parent->step(up);
    for (int property : {0, 1}) tell(property, up);
  }
  void tell(int property, bool up) {
    Modelled* const referenced = references[property];
    if (isAggregate && referenced != nullptr && referenced != this && isInside) referenced->step(up);
  }
  void refer(int property, Modelled* to) {
    if (uses != 0) tell(property, false);
    references[property] = to;
    if (uses != 0) tell(property, true);
  }
  void move() {
    if (uses != 0) {
      for (int property : {0, 1}) tell(property, false);
    }
    isInside = !isInside;
    if (isInside) isLinked = true;
    if (parent != nullptr && uses != 0) parent->step(isInside);
    isLinked = isInside;
    if (uses != 0) {
      for (int property : {0, 1}) tell(property, true);
    }
  }
};

/// Every way to change a reference, or to be rid of it. Their undo is for the random model to judge.
void changeReference(ZTSStyle& style, PropertyKey key, ZTSStyle* to, std::size_t way) {
  const Ref<PropertySet> keys = PropertySet::with({key});
  if (way == 0) return style.setValueForProperty(Ref<NSObject>(to), key);
  if (to != nullptr && way == 1) return style.lockedStyleSetValuesForProperties(*mapOf({{key, *to}}), 0);
  if (to != nullptr) return style.setValuesForProperties(*mapOf({{key, *to}}));
  if (way == 1) return style.lockedStyleRemoveValuesForProperties(*keys, 0);
  if (way == 2) return style.removeValuesForProperties(*keys);
  if (way == 3) return style.unconditionalRemoveValueForProperty(key);
  style.removeValueForProperty(key);
}

/// Random uses, references and moves over a few parents and the styles below them. With circles, anything may refer to
/// anything; without, a style refers to later ones alone, and the parents refer to nothing.
class RandomReferences {
 public:
  RandomReferences(unsigned seed, bool hasCircles) : mRandom(seed), mHasCircles(hasCircles) {
    scene.host.undo->disableUndoRegistration();
    for (std::size_t i = 0; i < styles.size(); ++i) {
      Modelled& style = styles[i];
      const StringRef identifier("s" + std::to_string(i));
      style.isAggregate = below(4) != 0 && (hasCircles || i >= kParents);
      if (i >= kParents && below(2) == 0) style.parent = &styles[below(kParents)];
      const StringRef parent = style.parent != nullptr ? style.parent->real->identifier() : StringRef();
      style.real = style.isAggregate ? static_cast<ZTSStyle*>(&scene.style<TestAggregate>(identifier, parent))
                                     : &scene.style(identifier, parent);
    }
  }

  void step() {
    const std::size_t which = below(styles.size());
    Modelled& style = styles[which];
    const std::size_t kind = below(6);
    const Ref<ZTSStyle> real(style.real);
    if (kind < 3) {
      const bool up = kind != 2;
      if (!up && style.own == 0) return;
      style.own += up ? 1u : ~0u;
      up ? real->incrementUsageCount() : real->decrementUsageCount();
      if (!mHasCircles) style.step(up);
    } else if (kind < 5 && style.isAggregate) {
      const std::size_t from = mHasCircles ? 0 : which + 1;
      const bool toNone = below(4) == 0 || from == styles.size();
      refer(style, static_cast<int>(below(2)), toNone ? nullptr : &styles[from + below(styles.size() - from)],
            below(5));
    } else if (kind == 5 && which >= kParents) {
      style.isInside ? scene.sheet->removeStyle(real) : scene.sheet->addStyle(real);
      mHasCircles ? void(style.isInside = !style.isInside) : style.move();
    }
  }
  void refer(Modelled& style, int property, Modelled* to, std::size_t way) {
    mHasCircles ? void(style.references[property] = to) : style.refer(property, to);
    changeReference(*style.real, property == 0 ? list : label, to != nullptr ? to->real : nullptr, way);
  }
  std::size_t below(std::size_t bound) { return mRandom() % bound; }

  static constexpr std::size_t kParents = 4;
  ZTULogRecorder log;
  ZTUAssertionRecorder reports;
  Scene scene;
  std::deque<Modelled> styles = std::deque<Modelled>(24);

 private:
  std::mt19937 mRandom;
  bool mHasCircles;
};

TEST(AggregateTest, CountsAsToldOverRandomReferencesWithoutCircles) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    RandomReferences random(seed, false);
    for (int i = 0; i < 400; ++i) {
      random.step();
      for (const Modelled& one : random.styles) {
        ASSERT_EQ(one.real->usageCount(), one.uses) << "step " << i;
        for (Modelled& other : random.styles) {
          const auto times = std::count(other.references, other.references + 2, &one);
          ASSERT_EQ(observations(*one.real, *other.real), static_cast<std::size_t>(other.isInside ? times : 0));
        }
      }
    }
  }
}

TEST(AggregateTest, KeepsInUseWhatIsUsedByWayOfCircles) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    RandomReferences random(seed, true);
    for (int i = 0; i < 400; ++i) {
      random.step();
      for (const Modelled& one : random.styles) {
        ASSERT_GE(one.real->usageCount(), one.own) << "step " << i;
        if (one.real->usageCount() == 0 || !one.isInside) continue;
        if (one.parent != nullptr) {
          ASSERT_NE(one.real->parent()->usageCount(), 0u) << "step " << i;
        }
        for (const Modelled* referenced : one.references) {
          if (referenced != nullptr) {
            ASSERT_NE(referenced->real->usageCount(), 0u) << "step " << i;
          }
        }
      }
    }
    // What was given is taken back to the last unit.
    for (Modelled& one : random.styles) {
      for (; one.own != 0; --one.own) one.real->decrementUsageCount();
      if (one.isAggregate) random.refer(one, 0, nullptr, 0), random.refer(one, 1, nullptr, 1);
    }
    for (const Modelled& one : random.styles) EXPECT_EQ(one.real->usageCount(), 0u);
  }
}

// ---- Circles

TEST(AggregateTest, AStyleInUseStaysSoWhenWhatItRefersToLetsGoOfIt) {
  Scene scene;
  TestAggregate& a = scene.style<TestAggregate>("a");
  TestAggregate& b = scene.style<TestAggregate>("b", {}, {{list, a}});
  a.setValueForProperty(Value(b), list);
  const auto uses = [&] { return State{a.usageCount(), b.usageCount()}; };
  a.incrementUsageCount();
  EXPECT_THAT(uses(), ElementsAre(1, 1));
  b.removeValueForProperty(list);
  EXPECT_THAT(uses(), ElementsAre(1, 1));
  b.setValueForProperty(Value(a), list);
  a.decrementUsageCount();
  b.removeValueForProperty(list);
  a.removeValueForProperty(list);
  EXPECT_THAT(uses(), ElementsAre(0, 0));
}

TEST(AggregateTest, ACircleUsedFromTwoSidesLivesUntilBothEnd) {
  Scene scene;
  TestAggregate& a = scene.style<TestAggregate>("a");
  TestAggregate& b = scene.style<TestAggregate>("b", {}, {{list, a}});
  a.setValueForProperty(Value(b), list);
  const auto uses = [&] { return State{a.usageCount(), b.usageCount()}; };
  a.incrementUsageCount();
  b.incrementUsageCount();
  EXPECT_THAT(uses(), ElementsAre(1, 2));
  a.decrementUsageCount();
  EXPECT_THAT(uses(), ElementsAre(1, 1));
  b.decrementUsageCount();
  EXPECT_THAT(uses(), ElementsAre(0, 0));
}

TEST(AggregateTest, AUseReachesReferencesAlsoWhereTheParentAnswersIt) {
  Scene scene;
  TestStyle& r = scene.style("r");
  TestAggregate& p = scene.style<TestAggregate>("p");
  TestAggregate& a = scene.style<TestAggregate>("a", "p", {{label, r}});
  TestStyle& c = scene.style("c", "a");
  a.setValueForProperty(Value(c), list);
  p.setValueForProperty(Value(a), list);
  a.incrementUsageCount();
  EXPECT_EQ(r.usageCount(), 1u);
  EXPECT_EQ(c.usageCount(), 1u);
  p.removeValueForProperty(list);
  a.decrementUsageCount();
  EXPECT_EQ(r.usageCount(), 0u);
  EXPECT_EQ(c.usageCount(), 0u);
}

// ---- Exceptions, values that are wrong

}  // namespace
}  // namespace zt::testing
