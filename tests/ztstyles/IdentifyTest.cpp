// Giving held styles an identifier, another one, or none.

#include "Scene.h"

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

class IdentifyTest : public ::testing::Test {
 protected:
  IdentifyTest() { lower->setParent(scene.sheet); }
  /// A style of the lower stylesheet.
  TestStyle& below(StringRef identifier, StringRef parent) {
    TestStyle& style = scene.detached(std::move(identifier), std::move(parent));
    lower->addStyle(Ref<ZTSStyle>(&style));
    scene.host.undo->removeAllActions();
    return style;
  }
  std::string taken(const ZTSStyle& holder, const ZTSStylesheet& sheet, const char* identifier) {
    return format("Style <%@ %p> in stylesheet <%p> is already identified with identifier %@.",
                  holder.classObject().name(), address(&holder), address(&sheet), identifier);
  }
  static Ref<ZTSStyle> ref(ZTSStyle& style) { return Ref<ZTSStyle>(&style); }

  Scene scene;
  Ref<ZTSStylesheet> lower = ZTSStylesheet::withHost(&scene.host);
};

TEST_F(IdentifyTest, NamesAnAnonymousStyleForAllWhoMissIt) {
  TestStyle& style = scene.style({}, {}, {{size, 5}});
  TestStyle& child = below({}, "new");
  Log log;
  SheetRecorder recorder(log);
  scene.sheet->addObserver(&recorder);
  scene.sheet->identifyStyle(ref(style), "new");
  EXPECT_EQ(scene.sheet->styleWithIdentifier("new"), &style);
  EXPECT_TRUE(scene.sheet->anonymousStyles().isEmpty());
  EXPECT_EQ(valueOf(child, size), 5);
  EXPECT_EQ(scene.host.undo->undoActionNames(), (NSUndoManager::ActionNames{{"anonymizeStyle:"}}));
  scene.undo();
  EXPECT_TRUE(style.isAnonymous() && scene.sheet->anonymousStyles().containsObject(&style));
  EXPECT_EQ(child.parent(), nullptr);
  scene.redo();
  EXPECT_EQ(child.parent(), &style);
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(scene.sheet->indexesAreRight() && lower->indexesAreRight());
  scene.sheet->removeObserver(&recorder);
}

TEST_F(IdentifyTest, RenamesWithAllSomeOrNoChildren) {
  TestStyle& style = scene.style("old");
  TestStyle& kept = scene.style({}, "old");
  TestStyle& other = below({}, "old");
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "new", true);
  EXPECT_TRUE(kept.parent() == &style && other.parent() == &style);
  EXPECT_EQ(other.parentIdentifier(), "new");
  scene.undo();
  EXPECT_EQ(style.identifier(), "old");
  EXPECT_TRUE(kept.parent() == &style && kept.parentIdentifier() == "old");

  ZTUMutablePointerSet<ZTSStyle> some;
  some.addObject(&kept);
  scene.sheet->identifyStyleKeepingChildren(ref(style), "new", &some);
  EXPECT_EQ(kept.parent(), &style);
  EXPECT_EQ(other.parent(), nullptr);
  scene.undo();
  EXPECT_TRUE(kept.parent() == &style && other.parent() == &style);
  scene.redo();
  EXPECT_TRUE(kept.parent() == &style && other.parent() == nullptr);

  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "newer", false);
  EXPECT_EQ(kept.parent(), nullptr);
  EXPECT_TRUE(style.children().isEmpty());
  EXPECT_TRUE(scene.sheet->indexesAreRight() && lower->indexesAreRight());
}

TEST_F(IdentifyTest, ShadowsAndUnshadowsTheStyleAbove) {
  TestStyle& above = scene.style("name");
  TestStyle& style = below({}, {});
  TestStyle& child = below({}, "name");
  EXPECT_EQ(child.parent(), &above);
  lower->identifyStyle(ref(style), "name");
  EXPECT_EQ(child.parent(), &style);
  lower->anonymizeStyle(ref(style));
  EXPECT_EQ(child.parent(), &above);
  EXPECT_TRUE(lower->anonymousStyles().containsObject(&style));
  scene.undo();
  EXPECT_EQ(child.parent(), &style);
  scene.undo();
  EXPECT_EQ(child.parent(), &above);
}

TEST_F(IdentifyTest, RefusesAnIdentifierThatIsTakenOrWouldCaptureAKeptChild) {
  ZTUAssertionRecorder reports;
  TestStyle& style = scene.style("a");
  TestStyle& holder = scene.style("b");
  TestStyle& child = below({}, "a");
  TestStyle& captor = below("c", {});
  scene.host.undo->removeAllActions();
  scene.sheet->identifyStyle(ref(style), "b");
  scene.sheet->identifyStyle(ref(style), "a");
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "c", true);
  EXPECT_THAT(reports.descriptions(), ElementsAre(taken(holder, *scene.sheet, "b"), taken(style, *scene.sheet, "a"),
                                                  taken(captor, *lower, "c")));
  EXPECT_FALSE(scene.host.undo->canUndo());
  EXPECT_TRUE(style.identifier() == "a" && child.parent() == &style);
  scene.sheet->identifyStyle(ref(style), "c");  // nobody is kept, nobody is captured
  EXPECT_EQ(style.identifier(), "c");
  EXPECT_EQ(reports.reports().size(), 3u);
}

TEST_F(IdentifyTest, TakesBackARenamingWhoseKeptChildCarriesTheOldIdentifier) {
  ZTUAssertionRecorder reports;
  TestStyle& style = scene.style("a");
  TestStyle& child = below("a", "a");  // specialises it
  EXPECT_EQ(child.parent(), &style);
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "b", true);
  EXPECT_EQ(child.parent(), &style);
  scene.undo();
  EXPECT_EQ(style.identifier(), "a");
  EXPECT_EQ(child.parent(), &style);
  EXPECT_TRUE(reports.reports().empty());
}

TEST_F(IdentifyTest, ReportsWhatItIsNotGiven) {
  ZTUAssertionRecorder reports;
  TestStyle& style = scene.style("a");
  TestStyle& stranger = scene.style("b");
  const Ref<ZTSStyle> loose = make<TestStyle>();
  ZTUMutablePointerSet<ZTSStyle> noChildren;
  noChildren.addObject(&stranger);
  scene.sheet->identifyStyle({}, {});
  scene.sheet->identifyStyleKeepingChildren(ref(style), {}, &noChildren);
  scene.sheet->anonymizeStyle({});
  const void* sheet = address(scene.sheet.get());
  EXPECT_THAT(reports.descriptions(),
              ElementsAre(format("Stylesheet <%p> can't identify a nil style.", sheet),
                          format("Stylesheet <%p> can't identify style <%@ %p> with a nil identifier.", sheet,
                                 "TestStyle", address(&style)),
                          format("Children to keep are not a subset of the children of style <%@ %p>", "TestStyle",
                                 address(&style)),
                          format("Stylesheet <%p> can't identify a nil style.", sheet)));
  EXPECT_FALSE(scene.host.undo->canUndo());
  reports.takeReports();
  scene.sheet->anonymizeStyle(loose);
  EXPECT_THAT(reports.descriptions(),
              ElementsAre(format("Stylesheet <%p> can't identify style <%@ %p> in stylesheet <%p>.", sheet, "TestStyle",
                                 address(loose.get()), address(nullptr)),
                          format("Style <%@ %p> in stylesheet <%p> is already anonymous.", "TestStyle",
                                 address(loose.get()), sheet)));
  // Goes on with a style that is not held, without losing the one that is registered under its old identifier.
  loose->setIdentifier("a");
  scene.sheet->identifyStyle(loose, "c");
  EXPECT_EQ(scene.sheet->styleWithIdentifier("a"), &style);
  EXPECT_EQ(scene.sheet->styleWithIdentifier("c"), loose.get());
}

}  // namespace
}  // namespace zt::testing
