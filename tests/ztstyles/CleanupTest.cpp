// SPDX-License-Identifier: MIT

// Unused styles go when the outermost undo group closes.

#include "Scene.h"

#include <platform/NSException.h>
#include <platform/NSLog.h>

#include <functional>
#include <map>
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

struct Thrower : ZTSStylesheetObserver {
  void removedStyleFromStylesheet(ZTSStyle&, ZTSStylesheet&) override { throw 7; }
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
  host.removesUnused = false;
  host.undo->undo();
  EXPECT_EQ(count(), 4u);
  EXPECT_EQ(valueOf(*note, size), -1);
  host.removesUnused = true;
  // A count that falls to zero is enough; one that the host holds back stays.
  host.keepsIdentified = true;
  userAction([&] { heading->decrementUsageCount(); });
  EXPECT_EQ(count(), 2u);
  host.keepsIdentified = false;
  for (int twice = 0; twice < 2; ++twice) userAction([] {});
  EXPECT_EQ(count(), 0u);
  EXPECT_EQ(host.cleanups, 3);  // of the last action nobody hears: nothing was removed
}

TEST_F(CleanupTest, RemovesNothingDuringUndoAndSurvivesWhatTheHostThrows) {
  const Log line{format("Error cleaning up unused styles for stylesheet %p", address(sheet.get()))};
  const Ref<ZTSStyle> style = add("a");
  host.undo->registerUndo("cleanupUnusedStyles", sheet, [](ZTSStylesheet& each) { each.cleanupUnusedStyles(); });
  NSLogRecorder lines;
  host.undo->undo();
  EXPECT_EQ(lines.takeMessages(), line);
  EXPECT_EQ(count(), 1u);
  EXPECT_EQ(host.cleanups, 0);
  host.undo->removeAllActions();

  add("b"), add("c");
  host.whenAsked = [&](ZTSStyle& asked) {
    if (asked.identifier() == "b") throw NSGenericException("no");
  };
  sheet->cleanupUnusedStyles();
  EXPECT_EQ(lines.takeMessages(), line);
  EXPECT_EQ(count(), 2u);
  EXPECT_EQ(host.cleanups, 1);
  host.whenAsked = [](ZTSStyle&) { throw 5; };
  EXPECT_THROW(sheet->cleanupUnusedStyles(), int);
  host.whenAsked = {};
  // An observer that throws ends the pass, and the host hears of what went.
  Thrower thrower;
  sheet->addObserver(&thrower);
  EXPECT_THROW(sheet->cleanupUnusedStyles(), int);
  EXPECT_EQ(count(), 1u);
  EXPECT_EQ(host.cleanups, 2);
  sheet->removeObserver(&thrower);
  sheet->cleanupUnusedStyles();
  EXPECT_EQ(count(), 0u);
}

TEST_F(CleanupTest, EndsTheRegistrationThatItMade) {
  const Ref<NSUndoManager> first = host.undo;
  const auto isListening = [&] {
    return NSNotificationCenter::anyoneListens(NSUndoManagerWillCloseUndoGroupNotification, first.get());
  };
  sheet->disableUnusedStyleCleanup();
  for (int twice = 0; twice < 2; ++twice) sheet->enableUnusedStyleCleanup();
  EXPECT_TRUE(isListening());
  host.undo = make<NSUndoManager>();  // the manager of the moment is another
  for (int twice = 0; twice < 2; ++twice) sheet->disableUnusedStyleCleanup();
  EXPECT_FALSE(isListening());
  host.undo = first;
  sheet->enableUnusedStyleCleanup();
  EXPECT_EQ(first->referenceCount(), 2u);  // not held by the stylesheet
  sheet = ZTSStylesheet::withHost(&host);
  EXPECT_FALSE(isListening());

  host.hasUndo = false;
  ZTUAssertionRecorder reports;
  sheet->enableUnusedStyleCleanup();
  EXPECT_TRUE(sheet->isUnusedStyleCleanupEnabled());
  EXPECT_EQ(reports.descriptions(), Log{"NIL undo manager"});
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
  host.hasUndo = false;
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    sheet = ZTSStylesheet::withHost(&host);
    host.keepsIdentified = round % 3 == 0;
    std::vector<Ref<ZTSStyle>> styles;
    std::map<ZTSStyle*, int> uses;  // the host's own, without those by children
    const auto disuse = [&](ZTSStyle& style) {
      if (uses[&style] > 0 && --uses[&style] >= 0) style.decrementUsageCount();
    };
    const auto enterOrLeave = [&](const Ref<ZTSStyle>& style) {
      style->stylesheet() != nullptr ? sheet->removeStyle(style) : sheet->addStyle(style);
    };
    for (int each = 0; each < 40; ++each) {
      const std::size_t kind = below(3);
      const bool isUsed = below(2) == 0;
      styles.push_back(add(kind == 0 ? StringRef("s" + std::to_string(each)) : StringRef(),
                           kind == 1 ? "s" + std::to_string(below(40)) : StringRef(), isUsed));
      uses[styles.back().get()] = isUsed ? 1 : 0;
      if (each == 20 && round % 2 == 0) sheet->enableUnusedStyleCleanup();
    }
    for (int moved = 0; moved < 16; ++moved) enterOrLeave(styles[below(40)]);

    const std::vector<Ref<ZTSStyle>> snapshot = sheet->retainedStyles();
    std::vector<ZTSStyle*> expected;
    std::size_t at = 0;
    bool isNested = false;
    const auto moveOn = [&] {  // to the style whose turn it is
      while (at < snapshot.size() && (snapshot[at]->usageCount() != 0 || !sheet->holdsStyle(*snapshot[at]))) ++at;
      if (at < snapshot.size()) expected.push_back(snapshot[at++].get());
    };
    host.asked.clear();
    host.whenAsked = [&](ZTSStyle& asked) {
      if (isNested) return host.asked.pop_back();
      moveOn();
      for (std::size_t changes = below(4); changes > 0; --changes) {
        const Ref<ZTSStyle>& other = styles[below(40)];
        const bool isHere = other->stylesheet() != nullptr;
        switch (below(8)) {
          case 0:
            other->incrementUsageCount();
            ++uses[other.get()];
            break;
          case 1:
          case 2: disuse(*other); break;
          case 3:
          case 4:  // leaves or comes, and perhaps returns
            enterOrLeave(other);
            if (other->usageCount() == 1) disuse(*other);
            if (below(2) == 0) enterOrLeave(other);
            break;
          case 5:
            if (isHere && other->isIdentified()) sheet->anonymizeStyle(other);
            break;
          case 6:
            if (isHere) sheet->identifyStyle(other, "n" + std::to_string(below(20)));
            break;
          case 7:
            add();  // joined since: not visited
            if (below(5) != 0) break;
            const Ref<ZTSStyle> held(&asked);
            isNested = true;
            sheet->cleanupUnusedStyles();
            isNested = false;
        }
      }
      ASSERT_TRUE(sheet->indexesAreRight());
    };
    sheet->cleanupUnusedStyles();
    EXPECT_EQ(host.asked, expected);
    moveOn();
    EXPECT_EQ(host.asked.size(), expected.size());  // nobody is left whose turn it would be
    EXPECT_TRUE(sheet->indexesAreRight());
  }
}

}  // namespace
}  // namespace zt::testing
