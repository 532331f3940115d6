// SPDX-License-Identifier: MIT

// The tree of stylesheets: shadowing, re-parenting, order, and who may die first.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

TEST(HierarchyTest, AStyleHereShadowsTheOneAboveAndMayInheritFromIt) {
  Scene above;
  TestStyle& upper = above.style("a", {}, {{size, 1}});
  Scene scene(above.sheet.get());
  TestStyle& child = scene.style("child", "a");
  EXPECT_EQ(child.parent(), &upper);
  TestStyle& shadow = scene.style("a", "a");
  EXPECT_EQ(child.parent(), &shadow);
  EXPECT_EQ(shadow.parent(), &upper) << "the same identifier is looked up above";
}

TEST(HierarchyTest, ReparentingResolvesParentsAgainAndTells) {
  Scene above;
  above.style("a");
  Scene scene(above.sheet.get());
  TestStyle& child = scene.style("child", "a");
  scene.watch();
  scene.sheet->setParent(above.sheet);
  EXPECT_TRUE(scene.log.empty()) << "it is the parent already";
  scene.sheet->setParent({});
  EXPECT_EQ(child.parent(), nullptr);
  EXPECT_EQ(scene.log, Log{"observer parent"});
}

TEST(HierarchyTest, RefusesAParentBelowItself) {
  Scene above;
  Scene scene(above.sheet.get());
  EXPECT_TRUE(above.sheet->isAncestorOfStylesheet(scene.sheet.get()));
  EXPECT_FALSE(above.sheet->isAncestorOfStylesheet(above.sheet.get()));
  for (const Ref<ZTSStylesheet>& each : {above.sheet, scene.sheet})
    EXPECT_THROW(above.sheet->setParent(each), NSInvalidArgumentException);
  EXPECT_EQ(above.sheet->parent(), nullptr);
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

TEST(HierarchyTest, AStylesheetOutlivesItsHost) {
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
  EXPECT_EQ(sheet->styles().count(), 2u);
}

TEST(HierarchyTest, AStylesheetThatDiesLeavesItsParent) {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  ZTSStylesheet::withHost()->setParent(sheet);
  EXPECT_TRUE(sheet->children().isEmpty());
}

}  // namespace
}  // namespace zt::testing
