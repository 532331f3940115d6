// Unused styles go when the outermost undo group closes.

#include "Scene.h"

#include <platform/NSException.h>
#include <platform/NSLog.h>

#include <functional>
#include <random>

namespace zt::testing {
namespace {

/// Notes whom it is asked about, and does something on the way.
class AskedHost : public TestHost {
 public:
  bool willRemoveUnusedStyle(ZTSStyle& style) override {
    asked.push_back(&style);
    if (whenAsked) whenAsked(style);
    return TestHost::willRemoveUnusedStyle(style);
  }
  NSUndoManager* undoManager() const override { return hasUndo ? undo.get() : nullptr; }
  std::vector<ZTSStyle*> asked;
  std::function<void(ZTSStyle&)> whenAsked;
  bool hasUndo = true;
};

class CleanupTest : public ::testing::Test {
 protected:
  Ref<ZTSStyle> add(StringRef identifier = {}, StringRef parent = {}, bool used = false) {
    Ref<ZTSStyle> style = make<TestStyle>({.identifier = std::move(identifier), .parentIdentifier = std::move(parent)});
    sheet->addStyle(style);
    if (used) style->incrementUsageCount();
    return style;
  }
  std::size_t count() const { return sheet->styles().count(); }
  void userAction(const std::function<void()>& work) { host.undo->performInGroup(work); }

  AskedHost host;
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&host);
};

TEST_F(CleanupTest, RemovesTheUnusedWhenTheOutermostGroupClosesAndUndoBringsThemBack) {
  const Ref<ZTSStyle> body = add("body"), heading = add("heading", "body", true), draft = add({}, "heading"),
                      note = add({}, "body");
  sheet->enableUnusedStyleCleanup();
  host.undo->removeAllActions();
  userAction([&] {
    userAction([&] { note->setValueForProperty(Value(1), size); });
    EXPECT_EQ(count(), 4u);  // the inner group takes nothing
  });
  EXPECT_EQ(count(), 2u);  // body is used by heading
  EXPECT_EQ(host.asked, (std::vector<ZTSStyle*>{draft.get(), note.get()}));
  EXPECT_EQ(host.cleanups, 1);
  NSLogRecorder lines;
  host.removesUnused = false;
  host.undo->undo();
  EXPECT_EQ(count(), 4u);
  EXPECT_EQ(valueOf(*note, size), -1);
  host.removesUnused = true;
  userAction([] {});
  EXPECT_EQ(host.cleanups, 2);

  // A count that falls to zero is enough; one that the host holds back stays.
  host.keepsIdentified = true;
  userAction([&] { heading->decrementUsageCount(); });
  EXPECT_EQ(count(), 2u);
  host.keepsIdentified = false;
  userAction([] {});
  EXPECT_EQ(count(), 0u);
  EXPECT_EQ(host.cleanups, 3);
  userAction([] {});
  EXPECT_EQ(host.cleanups, 3);  // nothing was removed
  EXPECT_TRUE(sheet->indexesAreRight());
}

TEST_F(CleanupTest, RemovesNothingDuringUndo) {
  const Ref<ZTSStyle> style = add({}, {}, true);
  sheet->enableUnusedStyleCleanup();
  host.undo->removeAllActions();
  host.undo->registerUndo("decrementUsageCount", style, [&](ZTSStyle& each) {
    each.decrementUsageCount();
    sheet->cleanupUnusedStyles();
  });
  NSLogRecorder lines;
  host.undo->undo();
  EXPECT_EQ(count(), 1u);
  const std::string line = format("Error cleaning up unused styles for stylesheet %p", address(sheet.get()));
  EXPECT_THAT(lines.messages(), ::testing::Each(line));
  EXPECT_FALSE(lines.messages().empty());
  EXPECT_EQ(host.cleanups, 0);
}

TEST_F(CleanupTest, SurvivesWhatTheHostThrows) {
  add("a"), add("b"), add("c");
  NSLogRecorder lines;
  host.whenAsked = [&](ZTSStyle& style) {
    if (style.identifier() == "b") throw NSGenericException("no");
  };
  sheet->cleanupUnusedStyles();
  EXPECT_EQ(count(), 2u);
  EXPECT_EQ(lines.messages().size(), 1u);
  EXPECT_EQ(host.cleanups, 1);
  host.whenAsked = [](ZTSStyle&) { throw 5; };
  EXPECT_THROW(sheet->cleanupUnusedStyles(), int);
  host.whenAsked = {};
  sheet->cleanupUnusedStyles();
  EXPECT_EQ(count(), 0u);
  EXPECT_TRUE(sheet->indexesAreRight());
}

TEST_F(CleanupTest, EndsTheRegistrationThatItMade) {
  const Ref<NSUndoManager> first = host.undo;
  const auto isListening = [&] {
    return NSNotificationCenter::anyoneListens(NSUndoManagerWillCloseUndoGroupNotification, first.get());
  };
  sheet->disableUnusedStyleCleanup();
  sheet->enableUnusedStyleCleanup();
  sheet->enableUnusedStyleCleanup();
  EXPECT_TRUE(isListening());
  host.undo = make<NSUndoManager>();  // the manager of the moment is another
  sheet->disableUnusedStyleCleanup();
  EXPECT_FALSE(isListening());
  sheet->disableUnusedStyleCleanup();

  host.undo = first;
  sheet->enableUnusedStyleCleanup();
  EXPECT_EQ(first->referenceCount(), 2u);  // not held by the stylesheet
  sheet.reset();
  EXPECT_FALSE(isListening());
  first->performInGroup([] {});

  sheet = ZTSStylesheet::withHost(&host);
  host.hasUndo = false;
  ZTUAssertionRecorder reports;
  sheet->enableUnusedStyleCleanup();
  EXPECT_TRUE(sheet->isUnusedStyleCleanupEnabled());
  EXPECT_THAT(reports.descriptions(), ::testing::ElementsAre("NIL undo manager"));
  add();
  sheet->setHost(nullptr);
  sheet->cleanupUnusedStyles();
  EXPECT_EQ(count(), 1u);  // nobody agrees
}

// Against the walk over a snapshot, while the host uses, removes, renames, adds and asks for another pass on the way.
TEST_F(CleanupTest, VisitsWhomAWalkOverASnapshotWouldVisit) {
  ZTUAssertionRecorder reports;
  std::mt19937 random{7};
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    sheet = ZTSStylesheet::withHost(&host);
    host.hasUndo = false;
    host.keepsIdentified = round % 3 == 0;
    const bool enabled = round % 2 == 0;
    std::vector<Ref<ZTSStyle>> styles;
    for (int each = 0; each < 40; ++each) {
      const int kind = static_cast<int>(below(3));
      styles.push_back(add(kind == 0 ? StringRef("s" + std::to_string(each)) : StringRef(),
                           kind == 1 ? "s" + std::to_string(below(40)) : StringRef(), below(2) == 0));
      if (each == 20 && enabled) sheet->enableUnusedStyleCleanup();
    }
    for (int removed = 0; removed < 10; ++removed) sheet->removeStyle(styles[below(40)]);
    for (const Ref<ZTSStyle>& style : styles)
      if (style->stylesheet() == nullptr && below(2) == 0) sheet->addStyle(style);

    const std::vector<Ref<ZTSStyle>> snapshot = sheet->styles().retainedSnapshot();
    std::vector<ZTSStyle*> expected;
    std::size_t at = 0;
    int nested = 0;
    const auto moveOn = [&] {  // to the style whose turn it is
      while (at < snapshot.size() && (snapshot[at]->usageCount() != 0 || !sheet->holdsStyle(*snapshot[at]))) ++at;
      if (at < snapshot.size()) expected.push_back(snapshot[at++].get());
    };
    host.asked.clear();
    host.whenAsked = [&](ZTSStyle& asked) {
      if (nested == 0) moveOn();
      if (nested != 0) return;
      for (std::size_t changes = below(4); changes > 0; --changes) {
        const Ref<ZTSStyle>& other = styles[below(40)];
        switch (below(8)) {
          case 0: other->incrementUsageCount(); break;
          case 1:
          case 2:
            if (other->usageCount() != 0) other->decrementUsageCount();
            break;
          case 3:
            if (other->stylesheet() != nullptr) sheet->removeStyle(other);
            if (below(2) == 0 && other->stylesheet() == nullptr) {  // leaves and returns
              while (other->usageCount() != 0) other->decrementUsageCount();
              sheet->addStyle(other);
            }
            break;
          case 4:
            if (other->stylesheet() == nullptr) sheet->addStyle(other);
            break;
          case 5:
            if (other->stylesheet() != nullptr && other->isIdentified()) sheet->anonymizeStyle(other);
            break;
          case 6:
            if (other->stylesheet() != nullptr) sheet->identifyStyle(other, "n" + std::to_string(below(20)));
            break;
          case 7:
            add();  // joined since: not visited
            if (below(5) == 0) {
              nested = 1;
              const std::vector<ZTSStyle*> sofar = host.asked;
              const Ref<ZTSStyle> held(&asked);
              sheet->cleanupUnusedStyles();
              host.asked = sofar;
              nested = 0;
            }
            break;
        }
      }
      ASSERT_TRUE(sheet->indexesAreRight());
    };
    sheet->cleanupUnusedStyles();
    EXPECT_EQ(host.asked, expected);
    EXPECT_TRUE(sheet->indexesAreRight());
    while (at < snapshot.size() && (snapshot[at]->usageCount() != 0 || !sheet->holdsStyle(*snapshot[at]))) ++at;
    EXPECT_EQ(at, snapshot.size());
  }
}

}  // namespace
}  // namespace zt::testing
