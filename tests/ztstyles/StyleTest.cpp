// SPDX-License-Identifier: MIT

// A single style: how it starts, its identity, its counts, its parent.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

TEST(StyleTest, StartsDetachedWithNothingButItsMap) {
  const Ref<TestStyle> style = make<TestStyle>();
  EXPECT_FALSE(style->isNamed());
  EXPECT_FALSE(style->isIdentified());
  EXPECT_FALSE(style->isLocked());
  EXPECT_EQ(style->stylesheet(), nullptr);
  EXPECT_EQ(style->parent(), nullptr);
  EXPECT_EQ(style->usageCount(), 0u);
  EXPECT_EQ(style->orphanCount(), 0u);
}

TEST(StyleTest, KeepsAMapOfItsOwn) {
  const Ref<PropertyMap> map = mapOf({{size, 1}});
  const Ref<TestStyle> style = make<TestStyle>({.overridePropertyMap = map.get()});
  map->set(size, NSNumber::withInteger(2));
  EXPECT_EQ(valueOf(*style, size), 1);
}

TEST(StyleTest, IsNotMadeWithAPropertyThatItsClassDoesNotKnow) {
  ZTUAssertionRecorder reports;
  EXPECT_EQ(make<TestStyle>({.overridePropertyMap = PropertyMap::with({{"nonsense", NSNull::null()}}).get()}), nullptr);
  EXPECT_THAT(
      reports.descriptions(),
      ::testing::ElementsAre("initWithName:identifier:parentIdentifier:overridePropertyMap:isLocked: Attempt to "
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

TEST(StyleTest, TellsAndRegistersNothingForANameOrLockThatItHasAlready) {
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
}

TEST(StyleTest, KeepsItsIdentifierInAStylesheet) {
  Scene scene;
  TestStyle& style = scene.style("a");
  ZTUAssertionRecorder reports;
  style.setIdentifier("b");
  EXPECT_EQ(style.identifier(), "a");
  EXPECT_EQ(reports.descriptions(),
            Log{format("Attempt to set identifier of style <%p> which has a non-nil stylesheet.", address(&style))});
}

TEST(StyleTest, CountsNoFurtherDownThanZero) {
  const Ref<TestStyle> style = make<TestStyle>();
  style->incrementOrphanCount();
  style->decrementOrphanCount();
  EXPECT_THROW(style->decrementOrphanCount(), NSInternalInconsistencyException);
  EXPECT_EQ(style->orphanCount(), 0u);
  ZTUAssertionRecorder reports;
  style->decrementUsageCount();
  EXPECT_EQ(style->usageCount(), 0u);
  EXPECT_EQ(reports.descriptions(), Log{format("Attempt to decrement the usage count of style <%p> whose usage count "
                                               "is 0.",
                                               address(style.get()))});
}

TEST(StyleTest, KeepsItsParentWithoutAStylesheetAndGivesItBackItsUseWhenItDies) {
  const Ref<TestStyle> root = make<TestStyle>({.identifier = "root"});
  Ref<TestStyle> child = make<TestStyle>({.parentIdentifier = "root"});
  {
    const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    sheet->addStyle(root);
    sheet->addStyle(child);
  }
  EXPECT_EQ(child->stylesheet(), nullptr);
  EXPECT_EQ(child->parent(), root);
  child->incrementUsageCount();
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
  EXPECT_EQ((a.parent() != nullptr) + (b.parent() != nullptr) + (c.parent() != nullptr), 2);
  EXPECT_EQ(logs.entries().at(0).level, kZTULogFailure);
  scene.style("free");
  b.setParentIdentifier("free");
  EXPECT_EQ(a.parent(), &c);
  EXPECT_EQ(valueOf(a, size), 3);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

}  // namespace
}  // namespace zt::testing
