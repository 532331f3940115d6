// SPDX-License-Identifier: MIT

// Giving held styles an identifier, another one, or none.

#include "Scene.h"

namespace zt::testing {
namespace {

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

TEST_F(IdentifyTest, NamesAndShadowsForAllBelowWithoutTellingAnybody) {
  TestStyle& style = scene.style({}, {}, {{size, 5}});
  TestStyle& child = below({}, "new");
  TestStyle& nearer = below({}, {});
  Log log;
  SheetRecorder recorder(log);
  scene.sheet->addObserver(&recorder);
  scene.sheet->identifyStyle(ref(style), "new");
  EXPECT_EQ(scene.host.undo->undoActionNames(), (NSUndoManager::ActionNames{{"anonymizeStyle:"}}));
  EXPECT_TRUE(scene.sheet->anonymousStyles().isEmpty());
  EXPECT_EQ(valueOf(child, size), 5);
  lower->identifyStyle(ref(nearer), "new");
  EXPECT_EQ(child.parent(), &nearer);
  lower->anonymizeStyle(ref(nearer));
  EXPECT_EQ(child.parent(), &style);
  for (int steps = 0; steps < 3; ++steps) scene.undo();
  EXPECT_TRUE(scene.sheet->anonymousStyles().containsObject(&style));
  EXPECT_EQ(child.parent(), nullptr);
  EXPECT_TRUE(log.empty());
  scene.sheet->removeObserver(&recorder);
}

/// A style with a child beside it, and one in a stylesheet below that is called as it is, which must not keep a
/// renaming from being undone.
class RenameTest : public IdentifyTest {
 public:
  TestStyle& style = scene.style("old");
  TestStyle& kept = scene.style({}, "old");
  TestStyle& other = below("old", "old");

  [[nodiscard]] std::vector<ZTSStyle*> children() const { return style.children().allObjects(); }
  const std::vector<ZTSStyle*> both{&kept, &other}, one{&kept}, none{};

 protected:
  void TearDown() override {
    EXPECT_TRUE(scene.sheet->indexesAreRight());
    EXPECT_TRUE(lower->indexesAreRight());
    EXPECT_TRUE(mReports.reports().empty());
  }

 private:
  ZTUAssertionRecorder mReports;
};

TEST_F(RenameTest, KeepsAllChildrenAndRenamesWhatTheyLookFor) {
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "new", true);
  EXPECT_THAT(children(), ::testing::UnorderedElementsAreArray(both));
  EXPECT_EQ(other.parentIdentifier(), "new");
  scene.undo();
  EXPECT_THAT(children(), ::testing::UnorderedElementsAreArray(both));
  EXPECT_EQ(style.identifier(), "old");
  EXPECT_EQ(kept.parentIdentifier(), "old");
}

TEST_F(RenameTest, KeepsSomeChildren) {
  ZTUMutablePointerSet<ZTSStyle> some;
  some.addObject(&kept);
  scene.sheet->identifyStyleKeepingChildren(ref(style), "new", &some);
  EXPECT_EQ(children(), one);
  scene.undo();
  EXPECT_THAT(children(), ::testing::UnorderedElementsAreArray(both));
  scene.redo();
  EXPECT_EQ(children(), one);
}

TEST_F(RenameTest, KeepsNoChildren) {
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "newer", false);
  EXPECT_EQ(children(), none);
  EXPECT_EQ(kept.parent(), nullptr);
  EXPECT_EQ(other.parent(), nullptr);
}

TEST_F(IdentifyTest, RefusesAnIdentifierThatIsTakenOrWouldCaptureAKeptChild) {
  ZTUAssertionRecorder reports;
  TestStyle& style = scene.style("a");
  TestStyle& holder = scene.style("b");
  TestStyle& child = below({}, "a");
  TestStyle& captor = below("c", {});
  scene.sheet->identifyStyle(ref(style), "b");
  scene.sheet->identifyStyle(ref(style), "a");
  scene.sheet->identifyStyleKeepingAllChildren(ref(style), "c", true);
  EXPECT_EQ(reports.descriptions(),
            (Log{taken(holder, *scene.sheet, "b"), taken(style, *scene.sheet, "a"), taken(captor, *lower, "c")}));
  EXPECT_FALSE(scene.host.undo->canUndo());
  EXPECT_EQ(style.identifier(), "a");
  EXPECT_EQ(child.parent(), &style);
  scene.sheet->identifyStyle(ref(style), "c");  // nobody is kept, nobody is captured
  EXPECT_EQ(style.identifier(), "c");
  EXPECT_EQ(reports.reports().size(), 3u);
}

TEST_F(IdentifyTest, ReportsWhatItIsNotGiven) {
  ZTUAssertionRecorder reports;
  TestStyle& style = scene.style("a");
  ZTUMutablePointerSet<ZTSStyle> noChildren;
  noChildren.addObject(&scene.style("b"));
  scene.sheet->identifyStyleKeepingChildren({}, {}, &noChildren);
  scene.sheet->identifyStyleKeepingChildren(ref(style), {}, &noChildren);
  scene.sheet->anonymizeStyle({});
  const void* sheet = address(scene.sheet.get());
  const auto nilIdentifier = [&](const char* name, const void* whom) {
    return format("Stylesheet <%p> can't identify style <%@ %p> with a nil identifier.", sheet, name, whom);
  };
  const auto noSubset = [](const char* name, const void* whom) {
    return format("Children to keep are not a subset of the children of style <%@ %p>", name, whom);
  };
  const std::string nilStyle = format("Stylesheet <%p> can't identify a nil style.", sheet);
  EXPECT_EQ(reports.descriptions(),
            (Log{nilStyle, nilIdentifier("(null)", nullptr), noSubset("(null)", nullptr),
                 nilIdentifier("TestStyle", address(&style)), noSubset("TestStyle", address(&style)), nilStyle}));
  EXPECT_FALSE(scene.host.undo->canUndo());
  reports.takeReports();
  const Ref<ZTSStyle> loose = make<TestStyle>();
  scene.sheet->anonymizeStyle(loose);
  EXPECT_EQ(reports.descriptions(), (Log{format("Stylesheet <%p> can't identify style <%@ %p> in stylesheet <%p>.",
                                                sheet, "TestStyle", address(loose.get()), address(nullptr)),
                                         format("Style <%@ %p> in stylesheet <%p> is already anonymous.", "TestStyle",
                                                address(loose.get()), sheet)}));
  // Goes on with a style that is not held, without losing the one that is registered under its old identifier.
  loose->setIdentifier("a");
  scene.sheet->identifyStyle(loose, "c");
  EXPECT_EQ(scene.sheet->styleWithIdentifier("a"), &style);
  EXPECT_EQ(scene.sheet->styleWithIdentifier("c"), loose.get());
}

TEST_F(IdentifyTest, KeptStylesThatAreNoChildrenFindTheirParents) {
  TestStyle& style = scene.style("a");
  TestStyle& stranger = scene.style("stranger", "other");
  scene.style("other");
  ZTUMutablePointerSet<ZTSStyle> kept;
  kept.addObject(&stranger);
  ZTUAssertionRecorder reports;
  scene.sheet->identifyStyleKeepingChildren(ref(style), "b", &kept);
  EXPECT_EQ(stranger.parent(), &style);
  scene.undo();
  EXPECT_EQ(reports.takeReports().size(), 1u) << "that it was no child";
  scene.sheet->validate();
  EXPECT_EQ(reports.descriptions(), Log{});
}

}  // namespace
}  // namespace zt::testing
