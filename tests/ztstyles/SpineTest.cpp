// Identity, links, counting, registry and hierarchy: what the random sequences of RandomModelTest do not show.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(StyleTest, StartsDetachedAndRefusesWhatItsClassDoesNotKnow) {
  ZTUAssertionRecorder reports;
  const Ref<PropertyMap> map = mapOf({{size, 1}});
  const Ref<TestStyle> style = make<TestStyle>({.overridePropertyMap = map.get()});
  EXPECT_FALSE(style->isNamed() || style->isIdentified() || style->isLocked());
  EXPECT_TRUE(style->stylesheet() == nullptr && style->parent() == nullptr);
  EXPECT_EQ(style->usageCount() + style->orphanCount(), 0u);
  map->set(size, NSNumber::withInteger(2));
  EXPECT_EQ(valueOf(*style, size), 1) << "it has a map of its own";

  map->set("nonsense", NSNumber::withInteger(2));
  EXPECT_EQ(make<TestStyle>({.overridePropertyMap = map.get()}), nullptr);
  EXPECT_THAT(reports.descriptions(),
              ElementsAre("initWithName:identifier:parentIdentifier:overridePropertyMap:isLocked: Attempt to "
                          "initialize a style with an override of an unsupported property."));
}

/// A class of an application that looks for room for flags of its own.
class Greedy : public TestStyle {
 public:
  template <class T>
  static constexpr bool kReachesTheLock = requires(T& style) {
    style.mSmall[1] = 1;
  }
  || requires(T& style) { style.mSmall.mState = 1; }
  || requires(T& style) { style.mSmall = {}; };
};

TEST(StyleTest, KeepsItsLockOutOfReachOfDerivedClasses) { EXPECT_FALSE(Greedy::kReachesTheLock<Greedy>); }

TEST(StyleTest, ChangesItsIdentityWhereItDiffers) {
  Scene scene;
  TestStyle& style = scene.style("a");
  int posts = 0;
  NotificationListener listener(ZTSStyleNameChangedNotification, &style,
                                [&](const NSNotification& n) { posts += n.userInfo == nullptr; });
  style.setName("A");
  style.setName("A");
  style.setIsLocked(false);
  style.setIsLocked(true);
  EXPECT_EQ(posts, 1);
  EXPECT_EQ(scene.host.undo->undoActionNames(), (NSUndoManager::ActionNames{{"setName:"}, {"setIsLocked:"}}));

  ZTUAssertionRecorder reports;
  style.setIdentifier("b");
  EXPECT_EQ(style.identifier(), "a");
  EXPECT_EQ(reports.descriptions(),
            Log{format("Attempt to set identifier of style <%p> which has a non-nil stylesheet.", address(&style))});
}

TEST(StyleTest, CountsNoFurtherDownThanZeroAndGivesBackItsCountsWhenItDies) {
  const Ref<TestStyle> root = make<TestStyle>({.identifier = "root"});
  Ref<TestStyle> child = make<TestStyle>({.parentIdentifier = "root"});
  {
    const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    sheet->addStyle(root);
    sheet->addStyle(child);
  }
  EXPECT_TRUE(child->stylesheet() == nullptr && child->parent() == root);
  child->incrementOrphanCount();
  child->decrementOrphanCount();
  EXPECT_THROW(child->decrementOrphanCount(), NSInternalInconsistencyException);
  child->incrementUsageCount();
  ZTUAssertionRecorder reports;
  child.reset();
  EXPECT_TRUE(root->children().isEmpty());
  root->decrementUsageCount();
  EXPECT_EQ(root->usageCount() + root->orphanCount(), 0u);
  EXPECT_EQ(reports.descriptions(), Log{format("Attempt to decrement the usage count of style <%p> whose usage count "
                                               "is 0.",
                                               address(root.get()))});
}

TEST(StyleTest, RefusesToCloseALoopAndTriesAgainWhenItOpens) {
  Scene scene;
  ZTULogRecorder logs;
  TestStyle& a = scene.style("a", "c");
  TestStyle& b = scene.style("b", "a");
  TestStyle& c = scene.style("c", "b", {{size, 3}});
  EXPECT_EQ((a.parent() != nullptr) + (b.parent() != nullptr) + (c.parent() != nullptr), 2);
  EXPECT_EQ(logs.entries().at(0).level, kZTULogFailure);
  scene.style("free");
  b.setParentIdentifier("free");
  EXPECT_EQ(a.parent(), &c);
  EXPECT_EQ(valueOf(a, size), 3);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

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

TEST(StylesheetTest, CallsHooksInOrderAndDisplacesTheStyleOfTheSameIdentifier) {
  Scene scene;
  scene.watch();
  Hooked& old = scene.detached<Hooked>("a", {}, {{size, 1}});
  Hooked& fresh = scene.detached<Hooked>("a", {}, {{size, 2}});
  fresh.name = "fresh";
  old.log = fresh.log = &scene.log;
  scene.add(old);
  TestStyle& child = scene.style("child", "a");
  EXPECT_EQ(std::exchange(scene.log, {}),
            (Log{"will add old", "was added old", "observer added a", "observer added child"}));
  scene.add(fresh);
  EXPECT_EQ(std::exchange(scene.log, {}),
            (Log{"will remove old", "will add fresh", "was removed old", "was added fresh", "observer added a"}));
  EXPECT_TRUE(old.stylesheet() == nullptr && child.parent() == &fresh);
  scene.undo();
  EXPECT_TRUE(fresh.stylesheet() == nullptr && child.parent() == &old);
  scene.redo();
  EXPECT_EQ(valueOf(child, size), 2);
  scene.log.clear();
  scene.remove(fresh);
  EXPECT_EQ(scene.log, (Log{"will remove fresh", "observer removed a", "was removed fresh"}));
}

TEST(StylesheetTest, ReportsWhatItCannotAddOrRemove) {
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

TEST(StylesheetTest, StaysWholeWhenApplicationCodeThrowsOrReenters) {
  Scene scene;
  TestStyle& root = scene.style("root");
  Thrower& child = scene.style<Thrower>({}, "root");
  child.throwing = true;
  EXPECT_THROW(scene.remove(root), NSGenericException);
  EXPECT_TRUE(root.stylesheet() == nullptr && !scene.sheet->holdsStyle(root));
  Thrower& late = scene.detached<Thrower>("late");
  late.throwing = true;
  EXPECT_THROW(scene.add(late), NSGenericException);
  EXPECT_EQ(scene.sheet->holdsStyle(late), late.stylesheet() != nullptr);
  child.throwing = false;

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

TEST(StylesheetTest, RetriesOrphansWhenAnIdentifierArrives) {
  Scene above;
  Scene scene(above.sheet.get());
  TestStyle& waiting = scene.style({}, "late");
  TestStyle& other = scene.style({}, "never");
  EXPECT_EQ(scene.sheet->orphanStyles().count(), 2u);
  TestStyle& late = above.style("late");
  EXPECT_TRUE(waiting.parent() == &late && other.parent() == nullptr);
  above.remove(late);
  EXPECT_EQ(waiting.parent(), nullptr);

  // A style whose parent identifier was stored behind its back is tried at any retry.
  other.p_setParentIdentifier("late");
  above.undo();
  EXPECT_TRUE(waiting.parent() == &late && other.parent() == &late);
  // A link that names the stylesheet already does not resolve; the next retry does.
  TestStyle& linked = scene.detached({}, "late");
  linked.p_setStylesheet(scene.sheet.get());
  scene.add(linked);
  EXPECT_EQ(linked.parent(), nullptr);
  scene.sheet->updateParentForOrphanStyles();
  EXPECT_EQ(linked.parent(), &late);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(StylesheetTest, AnswersWhatItHolds) {
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

TEST(HierarchyTest, ShadowsAndReparents) {
  Scene above;
  TestStyle& upper = above.style("a", {}, {{size, 1}});
  Scene scene(above.sheet.get());
  TestStyle& child = scene.style("child", "a");
  EXPECT_EQ(child.parent(), &upper);
  TestStyle& shadow = scene.style("a", "a");
  EXPECT_EQ(child.parent(), &shadow);
  EXPECT_EQ(shadow.parent(), &upper) << "the same identifier is looked up above";

  scene.watch();
  scene.sheet->setParent(above.sheet);
  EXPECT_TRUE(scene.log.empty());
  scene.sheet->setParent({});
  EXPECT_EQ(shadow.parent(), nullptr);
  EXPECT_EQ(scene.log, Log{"observer parent"});
  above.sheet->setParent(scene.sheet);
  EXPECT_TRUE(scene.sheet->isAncestorOfStylesheet(above.sheet.get()));
  EXPECT_FALSE(scene.sheet->isAncestorOfStylesheet(scene.sheet.get()));
  for (const Ref<ZTSStylesheet>& each : {scene.sheet, above.sheet})
    EXPECT_THROW(scene.sheet->setParent(each), NSInvalidArgumentException);
  above.sheet->setParent({});
}

TEST(HierarchyTest, SortsParentsFirst) {
  const Ref<ZTSStylesheet> top = ZTSStylesheet::withHost(), middle = ZTSStylesheet::withHost(),
                           leaf = ZTSStylesheet::withHost();
  middle->setParent(top);
  leaf->setParent(middle);
  ZTUMutableRetainedPointerSet<ZTSStylesheet> set;
  set.addObject(leaf.get());
  set.addObject(middle.get());
  const std::vector<Ref<ZTSStylesheet>> sorted{top, middle, leaf};
  EXPECT_EQ(ZTSStylesheet::sortedClosureOverParentsOfStylesheetsSet(set), sorted);
  std::vector<Ref<ZTSStylesheet>> list;
  p_addParentAndStylesheet(list, *leaf);
  p_addParentAndStylesheet(list, *middle);
  EXPECT_EQ(list, sorted);
}

TEST(HierarchyTest, OutlivesHostAndStylesheet) {
  Ref<ZTSStylesheet> sheet;
  {
    TestHost host;
    sheet = ZTSStylesheet::withHost(&host);
    sheet->addStyle(make<TestStyle>({.identifier = "a"}));
    EXPECT_TRUE(host.undo->canUndo());
  }
  EXPECT_TRUE(sheet->host() == nullptr && sheet->undoManager() == nullptr);
  sheet->addStyle(make<TestStyle>({.identifier = "b"}));
  ZTSStylesheet::withHost()->setParent(sheet);
  EXPECT_TRUE(sheet->children().isEmpty());
}

}  // namespace
}  // namespace zt::testing
