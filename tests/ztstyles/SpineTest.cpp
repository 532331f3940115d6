// Identity, links, counting, registry and hierarchy.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

TEST(StyleTest, StartsDetachedAndRefusesUnknownProperties) {
  ZTUAssertionRecorder reports;
  const Ref<TestStyle> style = make<TestStyle>();
  EXPECT_FALSE(style->isNamed() || style->isIdentified() || style->isLocked() || style->overridesAnyProperty());
  EXPECT_EQ(style->stylesheet(), nullptr);
  EXPECT_EQ(style->parent(), nullptr);
  EXPECT_EQ(style->usageCount() + style->orphanCount(), 0u);

  const Ref<PropertyMap> unknown = mapOf({{"nonsense", 1}});
  EXPECT_EQ(make<TestStyle>({.overridePropertyMap = unknown.get()}), nullptr);
  EXPECT_THAT(
      reports.descriptions(),
      ::testing::ElementsAre("initWithName:identifier:parentIdentifier:overridePropertyMap:isLocked: Attempt to "
                             "initialize a style with an override of an unsupported property."));
  // Later changes of the caller's map do not reach the style.
  const Ref<PropertyMap> map = mapOf({{size, 1}});
  const Ref<TestStyle> kept = make<TestStyle>({.overridePropertyMap = map.get()});
  map->set(size, NSNumber::withInteger(2));
  EXPECT_EQ(valueOf(*kept, size), 1);
}

TEST(StyleTest, ChangesItsIdentityUndoably) {
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
  EXPECT_EQ(scene.host.undo->undoGroupCount(), 2u);
  scene.undo();
  scene.undo();
  EXPECT_FALSE(style.isNamed());
  EXPECT_FALSE(style.isLocked());
  scene.redo();
  EXPECT_EQ(style.name(), "A");

  ZTUAssertionRecorder reports;
  style.setIdentifier("b");
  EXPECT_EQ(style.identifier(), "a");
  EXPECT_THAT(reports.descriptions(), ::testing::ElementsAre(::testing::HasSubstr("which has a non-nil stylesheet.")));
}

TEST(StyleTest, FollowsItsParentIdentifier) {
  Scene scene;
  TestStyle& a = scene.style("a", {}, {{size, 1}});
  TestStyle& b = scene.style("b", {}, {{size, 2}});
  TestStyle& child = scene.style({}, "a");
  EXPECT_EQ(valueOf(child, size), 1);
  child.setParentIdentifier("b");
  EXPECT_EQ(child.parent(), &b);
  EXPECT_TRUE(a.children().isEmpty());
  child.setParentIdentifier("nowhere");
  EXPECT_EQ(child.parent(), nullptr);
  scene.undo();
  scene.undo();
  EXPECT_EQ(child.parent(), &a);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(StyleTest, CountsItsUsersAndUsedChildren) {
  Scene scene;
  TestStyle& root = scene.style("root");
  TestStyle& child = scene.style("child", "root");
  child.incrementUsageCount();
  child.incrementUsageCount();
  EXPECT_EQ(root.usageCount(), 1u);
  child.incrementOrphanCount();
  EXPECT_EQ(root.orphanCount(), 1u);

  TestStyle& used = scene.detached("used", "root");
  for (int uses = 0; uses < 5; ++uses) used.incrementUsageCount();
  scene.sheet->addStyle(Ref<ZTSStyle>(&used));
  EXPECT_EQ(root.usageCount(), 2u);
  scene.sheet->removeStyle(Ref<ZTSStyle>(&used));
  child.decrementUsageCount();
  child.decrementUsageCount();
  EXPECT_EQ(root.usageCount(), 0u);

  ZTUAssertionRecorder reports;
  child.decrementUsageCount();
  EXPECT_EQ(reports.reports().size(), 1u);
  child.decrementOrphanCount();
  EXPECT_THROW(child.decrementOrphanCount(), NSInternalInconsistencyException);
  EXPECT_EQ(child.usageCount() + child.orphanCount() + root.orphanCount(), 0u);
}

TEST(StyleTest, GivesBackItsCountsWhenItDies) {
  Ref<TestStyle> root = make<TestStyle>({.identifier = "root"});
  Ref<TestStyle> child = make<TestStyle>({.parentIdentifier = "root"});
  {
    const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    sheet->addStyle(root);
    sheet->addStyle(child);
    child->incrementUsageCount();
  }
  EXPECT_EQ(child->stylesheet(), nullptr);
  EXPECT_EQ(child->parent(), root.get());
  EXPECT_EQ(root->usageCount(), 1u);
  child.reset();
  EXPECT_TRUE(root->children().isEmpty());
  EXPECT_EQ(root->usageCount(), 0u);
}

TEST(StyleTest, RefusesToCloseALoopAndTriesAgainWhenItOpens) {
  Scene scene;
  ZTULogRecorder logs;
  TestStyle& a = scene.style("a", "c");
  TestStyle& b = scene.style("b", "a");
  TestStyle& c = scene.style("c", "b", {{size, 3}});
  // One of the three stays without a parent; lookups end.
  const int parents = (a.parent() != nullptr) + (b.parent() != nullptr) + (c.parent() != nullptr);
  EXPECT_EQ(parents, 2);
  EXPECT_FALSE(logs.entries().empty());
  EXPECT_EQ(logs.entries()[0].level, kZTULogFailure);
  for (ZTSStyle* style : {static_cast<ZTSStyle*>(&a), static_cast<ZTSStyle*>(&b), static_cast<ZTSStyle*>(&c)})
    valueOf(*style, size);

  scene.style("free");
  b.setParentIdentifier("free");  // opens the loop: b no longer inherits from a
  EXPECT_EQ(a.parent(), &c);
  EXPECT_EQ(c.parent(), &b);
  EXPECT_EQ(valueOf(a, size), 3);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(StylesheetTest, DisplacesTheStyleOfTheSameIdentifier) {
  Scene scene;
  TestStyle& old = scene.style("a", {}, {{size, 1}});
  TestStyle& child = scene.style({}, "a");
  SheetRecorder recorder(scene.log);
  scene.sheet->addObserver(&recorder);
  TestStyle& fresh = scene.detached("a", {}, {{size, 2}});
  scene.sheet->addStyle(Ref<ZTSStyle>(&fresh));
  EXPECT_EQ(old.stylesheet(), nullptr);
  EXPECT_EQ(child.parent(), &fresh);
  EXPECT_EQ(scene.log, Log{"observer added a"});
  scene.undo();
  EXPECT_EQ(child.parent(), &old);
  EXPECT_EQ(fresh.stylesheet(), nullptr);
  scene.redo();
  EXPECT_EQ(valueOf(child, size), 2);
  scene.sheet->removeObserver(&recorder);
}

TEST(StylesheetTest, ReportsWhatItCannotAddOrRemove) {
  Scene scene;
  Scene other;
  TestStyle& held = scene.style("a");
  TestStyle& foreign = other.style("f");
  TestStyle& loose = scene.detached("a");
  ZTUAssertionRecorder reports;
  scene.sheet->addStyle({});
  scene.sheet->addStyle(Ref<ZTSStyle>(&held));
  scene.sheet->addStyle(Ref<ZTSStyle>(&foreign));
  scene.sheet->removeStyle({});
  scene.sheet->removeStyle(Ref<ZTSStyle>(&loose));
  (void)scene.sheet->stylesOfClassWithName(nullptr, {});
  EXPECT_THAT(reports.descriptions(),
              ::testing::ElementsAre(
                  ::testing::HasSubstr("Attempt to add nil style"), ::testing::HasSubstr("Attempt to re-add style"),
                  ::testing::HasSubstr("Attempt to add a style"), ::testing::HasSubstr("Attempt to remove nil style"),
                  ::testing::HasSubstr("not contained in stylesheet"), "Class should not be nil.",
                  "Name should not be nil.", "Name should not be zero length."));
  EXPECT_EQ(scene.sheet->styles().count(), 1u);
  EXPECT_EQ(scene.host.undo->undoGroupCount(), 0u);
}

TEST(StylesheetTest, CallsTheDocumentHooksInOrder) {
  struct Hooked : TestStyle {
    static const ZTSStyleClass& styleClass() {
      static const auto* object = new TestClassOf<Hooked>("Hooked", TestStyle::styleClass());
      return *object;
    }
    const ZTSStyleClass& classObject() const override { return styleClass(); }
    void willBeAddedToDocument(NSDocument*, NSObject*) override { log->push_back("will add"); }
    void wasAddedToDocument(NSDocument*, NSObject*) override { log->push_back("was added"); }
    void willBeRemovedFromDocument(NSDocument*) override { log->push_back("will remove"); }
    void wasRemovedFromDocument(NSDocument*) override { log->push_back("was removed"); }
    Log* log = nullptr;
  };
  Scene scene;
  SheetRecorder recorder(scene.log);
  scene.sheet->addObserver(&recorder);
  Hooked& style = scene.detached<Hooked>("a");
  style.log = &scene.log;
  scene.sheet->addStyle(Ref<ZTSStyle>(&style));
  scene.sheet->removeStyle(Ref<ZTSStyle>(&style));
  EXPECT_EQ(scene.log,
            (Log{"will add", "was added", "observer added a", "will remove", "observer removed a", "was removed"}));
  scene.sheet->removeObserver(&recorder);
}

TEST(StylesheetTest, StaysWholeWhenApplicationCodeThrowsOrReenters) {
  struct Thrower : TestStyle {
    static const ZTSStyleClass& styleClass() {
      static const auto* object = new TestClassOf<Thrower>("Thrower", TestStyle::styleClass());
      return *object;
    }
    const ZTSStyleClass& classObject() const override { return styleClass(); }
    void updateParent() override {
      if (throwing) throw NSGenericException("no");
      ZTSStyle::updateParent();
    }
    bool throwing = false;
  };
  Scene scene;
  TestStyle& root = scene.style("root");
  Thrower& child = scene.style<Thrower>({}, "root");
  EXPECT_EQ(child.parent(), &root);
  child.throwing = true;
  EXPECT_THROW(scene.sheet->removeStyle(Ref<ZTSStyle>(&root)), NSGenericException);
  EXPECT_EQ(root.stylesheet(), nullptr);
  EXPECT_FALSE(scene.sheet->holdsStyle(root));
  Thrower& late = scene.detached<Thrower>("late");
  late.throwing = true;
  EXPECT_THROW(scene.sheet->addStyle(Ref<ZTSStyle>(&late)), NSGenericException);
  EXPECT_EQ(scene.sheet->holdsStyle(late), late.stylesheet() != nullptr);
  child.throwing = false;

  struct Remover : SheetRecorder {
    using SheetRecorder::SheetRecorder;
    void addedStyleToStylesheet(ZTSStyle& style, ZTSStylesheet& sheet) override {
      SheetRecorder::addedStyleToStylesheet(style, sheet);
      sheet.removeStyle(Ref<ZTSStyle>(&style));
    }
  } remover(scene.log);
  scene.sheet->addObserver(&remover);
  scene.sheet->addStyle(make<TestStyle>({.identifier = "gone"}));
  EXPECT_EQ(scene.log, (Log{"observer added gone", "observer removed gone"}));
  EXPECT_EQ(scene.sheet->styleWithIdentifier("gone"), nullptr);
  scene.sheet->removeObserver(&remover);
}

TEST(StylesheetTest, RetriesOrphansWhenAnIdentifierArrives) {
  Scene scene;
  const Ref<ZTSStylesheet> below = ZTSStylesheet::withHost();
  below->setParent(scene.sheet);
  const Ref<TestStyle> waiting = make<TestStyle>({.parentIdentifier = "late"});
  const Ref<TestStyle> other = make<TestStyle>({.parentIdentifier = "never"});
  below->addStyle(waiting);
  below->addStyle(other);
  EXPECT_EQ(below->orphanStyles().count(), 2u);
  EXPECT_TRUE(below->indexesAreRight());
  TestStyle& late = scene.style("late");
  EXPECT_EQ(waiting->parent(), &late);
  EXPECT_EQ(other->parent(), nullptr);
  scene.sheet->removeStyle(Ref<ZTSStyle>(&late));
  EXPECT_EQ(waiting->parent(), nullptr);
  EXPECT_TRUE(below->indexesAreRight());

  // A style whose parent identifier was stored behind its back is tried at any retry.
  other->p_setParentIdentifier("late");
  scene.undo();
  EXPECT_EQ(waiting->parent(), &late);
  EXPECT_EQ(other->parent(), &late);
  // A link that names the stylesheet already does not resolve; the next retry does.
  const Ref<TestStyle> linked = make<TestStyle>({.parentIdentifier = "late"});
  linked->p_setStylesheet(below.get());
  below->addStyle(linked);
  EXPECT_EQ(linked->parent(), nullptr);
  below->updateParentForOrphanStyles();
  EXPECT_EQ(linked->parent(), &late);
  EXPECT_TRUE(below->indexesAreRight());
}

TEST(HierarchyTest, ShadowsAndReparents) {
  Scene above;
  TestStyle& upper = above.style("a", {}, {{size, 1}});
  Scene scene(above.sheet.get());
  TestStyle& child = scene.style("child", "a");
  EXPECT_EQ(child.parent(), &upper);
  TestStyle& shadow = scene.style("a", "a", {{weight, 7}});
  EXPECT_EQ(child.parent(), &shadow);
  EXPECT_EQ(shadow.parent(), &upper);  // the same identifier is looked up above
  EXPECT_EQ(valueOf(child, size), 1);

  SheetRecorder recorder(scene.log);
  scene.sheet->addObserver(&recorder);
  scene.sheet->setParent(above.sheet);
  EXPECT_TRUE(scene.log.empty());
  scene.sheet->setParent({});
  EXPECT_EQ(shadow.parent(), nullptr);
  EXPECT_EQ(scene.log, Log{"observer parent"});
  scene.sheet->removeObserver(&recorder);
  EXPECT_THROW(scene.sheet->setParent(scene.sheet), NSInvalidArgumentException);
  above.sheet->setParent(scene.sheet);
  EXPECT_THROW(scene.sheet->setParent(above.sheet), NSInvalidArgumentException);
  EXPECT_TRUE(scene.sheet->isAncestorOfStylesheet(above.sheet.get()));
  EXPECT_FALSE(scene.sheet->isAncestorOfStylesheet(scene.sheet.get()));
  above.sheet->setParent({});
}

TEST(HierarchyTest, SortsParentsFirst) {
  const Ref<ZTSStylesheet> top = ZTSStylesheet::withHost();
  const Ref<ZTSStylesheet> middle = ZTSStylesheet::withHost();
  const Ref<ZTSStylesheet> leaf = ZTSStylesheet::withHost();
  middle->setParent(top);
  leaf->setParent(middle);
  ZTUMutableRetainedPointerSet<ZTSStylesheet> set;
  set.addObject(leaf.get());
  set.addObject(middle.get());
  EXPECT_EQ(ZTSStylesheet::sortedClosureOverParentsOfStylesheetsSet(set),
            (std::vector<Ref<ZTSStylesheet>>{top, middle, leaf}));
  std::vector<Ref<ZTSStylesheet>> list;
  p_addParentAndStylesheet(list, *leaf);
  p_addParentAndStylesheet(list, *middle);
  EXPECT_EQ(list, (std::vector<Ref<ZTSStylesheet>>{top, middle, leaf}));
}

TEST(HierarchyTest, OutlivesHostAndStylesheet) {
  Ref<ZTSStylesheet> sheet;
  {
    TestHost host;
    sheet = ZTSStylesheet::withHost(&host);
    sheet->addStyle(make<TestStyle>({.identifier = "a"}));
    EXPECT_TRUE(host.undo->canUndo());
  }
  EXPECT_EQ(sheet->host(), nullptr);
  EXPECT_EQ(sheet->undoManager(), nullptr);
  sheet->addStyle(make<TestStyle>({.identifier = "b"}));
  Ref<ZTSStylesheet> below = ZTSStylesheet::withHost();
  below->setParent(sheet);
  below.reset();
  EXPECT_TRUE(sheet->children().isEmpty());
}

}  // namespace
}  // namespace zt::testing
