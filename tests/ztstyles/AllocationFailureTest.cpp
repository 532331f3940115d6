// SPDX-License-Identifier: MIT

// Operations on a stylesheet while memory runs out: each allocation of an operation fails in turn, once alone and once
// with all after it. What is left must be sound, and must end without memory too.

#include "Scene.h"

#include <tests/AllocationFailures.h>

#include <new>

namespace zt::testing {
namespace {

/// Runs the work with its n-th allocation failing, alone or with all after it; whether one did.
bool failsAt(std::uint64_t nth, bool andAllAfter, const std::function<void()>& work) {
  using Extent = test::FailingAllocations::Extent;
  const test::FailingAllocations failing(nth, andAllAfter ? Extent::all : Extent::one);
  try {
    work();
  } catch (const std::bad_alloc&) {
  }
  return failing.hasFailed();
}

/// A base with enough children for an index, orphans that wait, and what an operation may need.
struct Model {
  Model() {
    for (int number = 0; number < 20; ++number) scene.style({}, "base", {{size, number}});
    // The index over them is to be built anew, and what holds a style that has changed to be entered again.
    auto& holder = scene.style({}, "base", {{label, value}});
    scene.sheet->anonymousChildOfStyle(&base, wanted.get(), false);
    for (int change = 0; change < 140; ++change) holder.p_setValueForProperty(Value(change), weight);
    value.setValueForProperty(Value(1), size);
    for (int number = 0; number < 3; ++number) scene.style({}, "late");
    scene.sheet->enableUnusedStyleCleanup();
    base.incrementUsageCount();
    scene.host.removesUnused = false;
  }
  Scene above;
  Scene scene;
  TestStyle& base = scene.style("base");
  TestStyle& child = scene.style("child", "base");
  TestStyle& late = scene.detached("late", "base");
  TestStyle& second = scene.detached("base");
  TestStyle& loose = scene.detached({}, "base");
  TestStyle& stays = scene.style("stays");
  TestStyle& value = scene.style("value");
  TestAggregate& aggregate = scene.style<TestAggregate>("aggregate", {}, {{list, stays}});
  Ref<PropertyMap> wanted = mapOf({{size, 7}});
  Ref<ZTSStyle> held(ZTSStyle& style) const { return Ref<ZTSStyle>(&style); }
};

struct Operation {
  const char* name;
  void (*run)(Model&);
};

const Operation kOperations[] = {
    {"adds what orphans wait for", [](Model& m) { m.scene.add(m.late); }},
    {"displaces a parent", [](Model& m) { m.scene.add(m.second); }},
    {"adds an anonymous style", [](Model& m) { m.scene.add(m.loose); }},
    {"removes a parent", [](Model& m) { m.scene.remove(m.base); }},
    {"renames a parent", [](Model& m) { m.scene.sheet->identifyStyle(m.held(m.base), "late"); }},
    {"anonymizes a parent", [](Model& m) { m.scene.sheet->anonymizeStyle(m.held(m.base)); }},
    {"finds a variation", [](Model& m) { m.scene.sheet->variationOfStyle(&m.base, {.propertyMap = m.wanted.get()}); }},
    {"finds a child", [](Model& m) { m.scene.sheet->anonymousChildOfStyle(&m.base, m.wanted.get(), false); }},
    {"finds an anonymous style",
     [](Model& m) { m.scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), "base", m.wanted.get(), false); }},
    {"moves the stylesheet", [](Model& m) { m.scene.sheet->setParent(m.above.sheet); }},
    {"cleans up",
     [](Model& m) {
       m.scene.host.removesUnused = true;
       m.scene.sheet->cleanupUnusedStyles();
     }},
    {"gives a style another parent", [](Model& m) { m.child.setParentIdentifier("stays"); }},
    {"replaces a parent", [](Model& m) { m.base.replaceWithStyle(&m.stays); }},
    {"removes an aggregate", [](Model& m) { m.scene.remove(m.aggregate); }},
    {"links a style alone", [](Model& m) { m.loose.setStylesheet(m.scene.sheet.get()); }},
};

TEST(AllocationFailureTest, LeavesAStylesheetThatIsSoundAndCanEnd) {
  std::size_t failures = 0;
  for (const Operation& operation : kOperations) {
    for (const bool andAllAfter : {false, true}) {
      bool hasFailed = true;
      for (std::uint64_t nth = 0; hasFailed && !HasFailure(); ++nth) {
        SCOPED_TRACE(std::string(operation.name) + ", allocation " + std::to_string(nth));
        Model model;
        model.scene.host.undo->beginUndoGrouping();
        hasFailed = failsAt(nth, andAllAfter, [&] { operation.run(model); });
        model.scene.host.removesUnused = false;
        model.scene.host.undo->endUndoGrouping();
        failures += hasFailed ? 1 : 0;
        ZTUAssertionRecorder reports;
        model.scene.sheet->validate();
        EXPECT_EQ(reports.descriptions(), Log{});
        EXPECT_TRUE(model.scene.sheet->indexesAreRight());
        // What was done can be taken back, and nothing else is in the way of the next operation.
        model.scene.undo();
        EXPECT_EQ(model.scene.sheet->cascadedStyleWithIdentifier("base"), &model.base);
        EXPECT_EQ(model.late.stylesheet(), nullptr);
        model.scene.host.undo->removeAllActions();
        EXPECT_GE(model.base.children().count(), 22u);
        EXPECT_TRUE(model.scene.sheet->anonymousChildOfStyle(&model.base, model.wanted.get(), false));
        model.scene.add(model.late);
        EXPECT_EQ(model.late.children().count(), 3u);
        EXPECT_EQ(reports.descriptions(), Log{});
        model.scene.host.undo->removeAllActions();
        failsAt(nth % 8, andAllAfter, [&] { model.scene.sheet.reset(); });
        EXPECT_EQ(model.base.stylesheet(), nullptr);
      }
    }
  }
  EXPECT_GT(failures, 50u);
}

}  // namespace
}  // namespace zt::testing
