// SPDX-License-Identifier: MIT

// The registry of a stylesheet: adding, removing, displacing, finding, and styles that wait for their parent.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

struct Hooked : ZTSStyleOf<Hooked, TestStyle> {
  static constexpr const char* kClassName = "Hooked";
  void willBeAddedToDocument(NSDocument*, NSObject*) override { note("will add "); }
  void wasAddedToDocument(NSDocument*, NSObject*) override { note("was added "); }
  void willBeRemovedFromDocument(NSDocument*) override { note("will remove "); }
  void wasRemovedFromDocument(NSDocument*) override { note("was removed "); }
  void note(const std::string& what) const { log->push_back(what + name); }
  Log* log = nullptr;
  const char* name = "old";
};

/// A style "a" with a child, and another of the same identifier that may take its place.
struct Displacement {
  Scene scene;
  Hooked& old = scene.detached<Hooked>("a", {}, {{size, 1}});
  Hooked& fresh = scene.detached<Hooked>("a", {}, {{size, 2}});
  TestStyle* child = nullptr;

  Displacement() {
    scene.watch();
    fresh.name = "fresh";
    old.log = fresh.log = &scene.log;
    scene.add(old);
    child = &scene.style("child", "a");
  }
};

TEST(RegistryTest, CallsHooksAroundAddingDisplacingAndRemoving) {
  Displacement play;
  Scene& scene = play.scene;
  EXPECT_EQ(std::exchange(scene.log, {}),
            (Log{"will add old", "was added old", "observer added a", "observer added child"}));
  scene.add(play.fresh);
  EXPECT_EQ(std::exchange(scene.log, {}),
            (Log{"will remove old", "will add fresh", "was removed old", "was added fresh", "observer added a"}));
  scene.remove(play.fresh);
  EXPECT_EQ(scene.log, (Log{"will remove fresh", "observer removed a", "was removed fresh"}));
}

TEST(RegistryTest, DisplacesTheStyleOfTheSameIdentifierAndPutsItBackWhenUndone) {
  Displacement play;
  play.scene.add(play.fresh);
  EXPECT_EQ(play.old.stylesheet(), nullptr);
  EXPECT_EQ(play.child->parent(), &play.fresh);
  play.scene.undo();
  EXPECT_EQ(play.fresh.stylesheet(), nullptr);
  EXPECT_EQ(play.child->parent(), &play.old);
  play.scene.redo();
  EXPECT_EQ(valueOf(*play.child, size), 2);
}

TEST(RegistryTest, ReportsWhatItCannotAddOrRemove) {
  Scene scene, other;
  TestStyle& held = scene.style("a");
  TestStyle& loose = scene.detached("a");
  TestStyle& foreign = other.style("f");
  ZTUAssertionRecorder reports;
  scene.sheet->addStyle({});
  scene.add(held);
  scene.add(foreign);
  scene.sheet->removeStyle({});
  scene.remove(loose);
  EXPECT_EQ(scene.sheet->stylesOfClassWithName(nullptr, {}).count(), 0u);
  const void* sheet = address(scene.sheet.get());
  EXPECT_EQ(
      reports.descriptions(),
      (Log{format("Attempt to add nil style to stylesheet <%@>", scene.sheet),
           format("Attempt to re-add style <TestStyle %p> with identifier 'a' to its stylesheet <%p>.", &held, sheet),
           format("Attempt to add a style <TestStyle %p> with stylesheet <%p> to stylesheet <%p>.", &foreign,
                  other.sheet, sheet),
           format("Attempt to remove nil style from stylesheet %@", scene.sheet),
           format("Attempt to remove style %@ not contained in stylesheet %@.", loose, scene.sheet),
           "Class should not be nil.", "Name should not be nil.", "Name should not be zero length."}));
  EXPECT_EQ(scene.sheet->styles().count(), 1u);
  EXPECT_FALSE(scene.host.undo->canUndo());
}

struct Thrower : ZTSStyleOf<Thrower, TestStyle> {
  static constexpr const char* kClassName = "Thrower";
  void updateParent() override {
    if (throwing) throw NSGenericException("no");
    ZTSStyle::updateParent();
  }
  bool throwing = false;
};

TEST(RegistryTest, HoldsAStyleWhollyOrNotAtAllWhenAnApplicationThrows) {
  Scene scene;
  TestStyle& root = scene.style("root");
  Thrower& child = scene.style<Thrower>({}, "root");
  child.throwing = true;
  EXPECT_THROW(scene.remove(root), NSGenericException);
  EXPECT_EQ(root.stylesheet(), nullptr);
  EXPECT_FALSE(scene.sheet->holdsStyle(root));
  Thrower& late = scene.detached<Thrower>("late");
  late.throwing = true;
  EXPECT_THROW(scene.add(late), NSGenericException);
  EXPECT_EQ(scene.sheet->holdsStyle(late), late.stylesheet() != nullptr);
}

TEST(RegistryTest, LetsAnObserverRemoveWhatWasJustAdded) {
  Scene scene;
  struct Remover : SheetRecorder {
    using SheetRecorder::SheetRecorder;
    void addedStyleToStylesheet(ZTSStyle& style, ZTSStylesheet& sheet) override {
      sheet.removeStyle(Ref<ZTSStyle>(&style));
    }
  } remover(scene.log);
  scene.sheet->addObserver(&remover);
  scene.sheet->addStyle(make<TestStyle>({.identifier = "gone"}));
  EXPECT_EQ(scene.log, Log{"observer removed gone"});
  EXPECT_EQ(scene.sheet->styleWithIdentifier("gone"), nullptr);
  scene.sheet->removeObserver(&remover);
}

TEST(RegistryTest, GivesWaitingStylesTheirParentWhenItArrivesAbove) {
  Scene above;
  Scene scene(above.sheet.get());
  TestStyle& waiting = scene.style({}, "late");
  TestStyle& other = scene.style({}, "never");
  EXPECT_EQ(scene.sheet->orphanStyles().count(), 2u);
  TestStyle& late = above.style("late");
  EXPECT_EQ(waiting.parent(), &late);
  EXPECT_EQ(other.parent(), nullptr);
  above.remove(late);
  EXPECT_EQ(waiting.parent(), nullptr);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(RegistryTest, GivesParentsToStylesheetsFurtherBelowAndToThemAlone) {
  Scene top;
  Scene middle(top.sheet.get());
  Scene bottom(middle.sheet.get());
  Scene beside;
  auto& deep = bottom.style({}, "late");
  auto& other = beside.style({}, "late");
  auto& late = top.style("late");
  EXPECT_EQ(deep.parent(), &late);
  EXPECT_EQ(other.parent(), nullptr);
  // What is found nearer is taken instead, and given up again for what is above.
  auto& nearer = middle.style("late");
  EXPECT_EQ(deep.parent(), &nearer);
  middle.remove(nearer);
  EXPECT_EQ(deep.parent(), &late);
  top.sheet->identifyStyle(Ref<ZTSStyle>(&late), "later");
  EXPECT_EQ(deep.parent(), nullptr);
}

TEST(RegistryTest, TriesWhatWasStoredBehindItsBackAtTheNextRetry) {
  Scene scene;
  TestStyle& moved = scene.style({}, "never");
  moved.p_setParentIdentifier("late");
  TestStyle& late = scene.style("late");
  EXPECT_EQ(moved.parent(), &late);

  // A link that names the stylesheet already does not resolve when the style is added.
  TestStyle& linked = scene.detached({}, "late");
  linked.p_setStylesheet(scene.sheet.get());
  scene.add(linked);
  EXPECT_EQ(linked.parent(), nullptr);
  scene.sheet->updateParentForOrphanStyles();
  EXPECT_EQ(linked.parent(), &late);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(RegistryTest, AnswersWhatItHolds) {
  Scene scene;
  TestStyle& a = scene.style("a");
  TestAggregate& derived = scene.style<TestAggregate>({});
  a.setName("N");
  derived.setName("N");
  EXPECT_EQ(scene.sheet->stylesWithIdentifiers({"none", "a"}),
            (std::vector<Ref<NSObject>>{NSNull::null(), Ref<NSObject>(&a)}));
  EXPECT_EQ(scene.sheet->stylesOfClassWithName(&TestStyle::styleClass(), "N").allObjects(),
            (std::vector<ZTSStyle*>{&a}));
  EXPECT_EQ(scene.sheet->stylesOfClass(&ZTSStyle::styleClass()).count(), 0u) << "exactly of the class";
}

}  // namespace
}  // namespace zt::testing
