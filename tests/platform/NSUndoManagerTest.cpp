// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSException.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTFormat.h>

#include <array>
#include <random>

namespace zt {
namespace {

using Names = NSUndoManager::ActionNames;

// A value whose setter registers its inverse, as every mutation does.
struct Cell final : NSObject {
  explicit Cell(NSUndoManager& undoManager) : manager(&undoManager) {}
  ~Cell() override {
    if (whenReleased) whenReleased();
  }
  void setNumber(int to) {
    if (refuses) throw NSGenericException("refused");
    manager->registerUndo("setNumber:", Ref<Cell>(this), [old = number](Cell& cell) { cell.setNumber(old); });
    number = to;
  }
  NSUndoManager* manager;
  std::function<void()> whenReleased;
  int number = 0;
  bool refuses = false;
};

class UndoTest : public testing::Test {
 protected:
  const Ref<NSUndoManager> manager = make<NSUndoManager>();
  const Ref<Cell> cell = make<Cell>(*manager);
  const Ref<Cell> other = make<Cell>(*manager);

  ~UndoTest() override { manager->removeAllActions(); }  // some actions hold the manager

  // Sets both cells in one group.
  void set(int number) {
    manager->performInGroup([&] {
      cell->setNumber(number);
      other->setNumber(-number);
    });
  }
  void expectNumbers(int number, int theOther) const {
    EXPECT_EQ(cell->number, number);
    EXPECT_EQ(other->number, theOther);
  }
};

TEST_F(UndoTest, AnEmptyGroupIsNoRegistration) {
  set(1);
  manager->undo();
  manager->undo();  // nothing left: nothing happens
  manager->performInGroup([] {});
  EXPECT_TRUE(manager->canRedo());
  EXPECT_FALSE(manager->canUndo());
  manager->redo();
  expectNumbers(1, -1);
}

TEST_F(UndoTest, TellsOfGroupsThatCloseAndTakesWhatIsRegisteredThen) {
  std::vector<std::size_t> levels;
  std::vector<int> whileUndoing;
  const NotificationListener listener(NSUndoManagerWillCloseUndoGroupNotification, manager.get(),
                                      [&](const NSNotification& told) {
                                        EXPECT_EQ(told.object, manager.get());
                                        levels.push_back(manager->groupingLevel());
                                        if (manager->isUndoing()) whileUndoing.push_back(cell->number);
                                        if (manager->groupingLevel() == 1 && !manager->isUndoing()) other->setNumber(7);
                                      });
  cell->setNumber(1);  // a group of its own, which closes silently
  manager->performInGroup([&] { set(2); });
  EXPECT_EQ(levels, (std::vector<std::size_t>{2, 1}));
  EXPECT_EQ(manager->undoActionNames(), (Names{{"setNumber:"}, {"setNumber:", "setNumber:", "setNumber:"}}));
  manager->undo();
  expectNumbers(1, 0);
  EXPECT_EQ(levels, (std::vector<std::size_t>{2, 1, 1}));
  manager->beginUndoGrouping();
  cell->setNumber(5);
  manager->undo();  // closes the open group first
  EXPECT_EQ(levels.size(), 5u);
  EXPECT_EQ(whileUndoing, (std::vector<int>{1, 1}));  // when all has been taken back
  expectNumbers(1, 0);
  EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoTest, AListenerThatThrowsAtTheEndOfAnUndoLeavesWhatCanBeRedone) {
  set(2);
  {
    const NotificationListener listener(NSUndoManagerWillCloseUndoGroupNotification, manager.get(),
                                        [](const NSNotification&) { throw NSGenericException("no"); });
    EXPECT_THROW(manager->undo(), NSGenericException);
  }
  expectNumbers(0, 0);
  EXPECT_FALSE(manager->isUndoingOrRedoing());
  EXPECT_FALSE(manager->canUndo());
  manager->redo();
  expectNumbers(2, -2);
}

struct CountedManager final : NSUndoManager {
  explicit CountedManager(int& deaths) : died(deaths) {}
  ~CountedManager() override { ++died; }
  int& died;
};

TEST(UndoManagerDeathTest, DestroysAManagerOnceThatIsReferredToWhileItDies) {
  int deaths = 0;
  Ref<CountedManager> dying = make<CountedManager>(deaths);
  const Ref<Cell> cell = make<Cell>(*dying);
  Ref<Cell> released = make<Cell>(*dying);
  // As an operation does that disables registration for its time.
  released->whenReleased = [&, manager = dying.get()] { const Ref<NSUndoManager> held(manager); };
  dying->registerUndo("setNumber:", std::exchange(released, nullptr), [](Cell&) {});
  dying.reset();
  EXPECT_EQ(deaths, 1);
}

TEST_F(UndoTest, WhileUndoingTheLevelIsOneAndTheStateCanBeAsked) {
  std::vector<std::string> seen;
  const std::function<void(NSUndoManager&)> look = [&](NSUndoManager& it) {
    seen.push_back(std::to_string(it.groupingLevel()) + (it.isUndoing() ? " undoing" : "") +
                   (it.isRedoing() ? " redoing" : ""));
    EXPECT_THROW(it.undo(), NSInternalInconsistencyException);
    EXPECT_THROW(it.redo(), NSInternalInconsistencyException);
    EXPECT_THROW(it.endUndoGrouping(), NSInternalInconsistencyException);
    it.performInGroup([&] { it.registerUndo("look", Ref<NSUndoManager>(&it), look); });
    it.beginUndoGrouping();  // and forgotten
  };
  manager->registerUndo("look", manager, look);
  manager->undo();
  manager->redo();
  EXPECT_EQ(seen, (std::vector<std::string>{"1 undoing", "1 redoing"}));
  EXPECT_FALSE(manager->isUndoingOrRedoing());
  EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoTest, WrongNestingIsRefusedAndChangesNothing) {
  EXPECT_THROW(manager->endUndoGrouping(), NSInternalInconsistencyException);
  EXPECT_THROW(manager->enableUndoRegistration(), NSInternalInconsistencyException);
  EXPECT_THROW(manager->registerUndo("setNumber:", Ref<Cell>(), [](Cell&) {}), NSInvalidArgumentException);
  set(1);
  manager->performInGroup([&] {
    EXPECT_THROW(manager->redo(), NSInternalInconsistencyException);
    manager->performInGroup([&] { EXPECT_THROW(manager->undo(), NSInternalInconsistencyException); });
  });
  manager->undo();
  expectNumbers(0, 0);
}

TEST_F(UndoTest, ListenersThatMisuseAClosingGroupDoNotBreakIt) {
  const auto closing = [&](const NSNotificationCenter::Callback& callback) {
    const NotificationListener listener(NSUndoManagerWillCloseUndoGroupNotification, manager.get(), callback);
    manager->beginUndoGrouping();
    cell->setNumber(cell->number + 1);
    manager->endUndoGrouping();
  };
  closing([&](const NSNotification&) {
    EXPECT_THROW(manager->endUndoGrouping(), NSInternalInconsistencyException);
    EXPECT_THROW(manager->undo(), NSInternalInconsistencyException);
  });
  closing([&](const NSNotification&) { manager->beginUndoGrouping(); });  // and forgotten
  EXPECT_THROW(closing([](const NSNotification&) { throw NSGenericException("no"); }), NSGenericException);
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_EQ(manager->undoGroupCount(), 3u);
  while (manager->canUndo()) manager->undo();
  EXPECT_EQ(cell->number, 0);
}

TEST_F(UndoTest, DisablingCountsAndLeavesNoTrace) {
  for (int times = 0; times < 2; ++times) manager->disableUndoRegistration();
  manager->enableUndoRegistration();
  set(1);
  EXPECT_FALSE(manager->canUndo());
  EXPECT_FALSE(manager->isUndoRegistrationEnabled());
  manager->enableUndoRegistration();
  set(2);
  EXPECT_TRUE(manager->canUndo());
}

TEST_F(UndoTest, AnActionThatThrowsLosesNothing) {
  manager->performInGroup([&] {
    for (const int number : {1, 2}) cell->setNumber(number), other->setNumber(number);
  });
  cell->refuses = true;
  EXPECT_THROW(manager->undo(), NSGenericException);
  expectNumbers(2, 1);  // one action was performed, three remain
  EXPECT_FALSE(manager->isUndoing());
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_EQ(manager->undoActionNames()[0].size(), 3u);
  EXPECT_EQ(manager->redoActionNames()[0].size(), 1u);
  cell->refuses = false;
  manager->undo();
  expectNumbers(0, 0);
  manager->redo();
  manager->redo();
  expectNumbers(2, 2);
}

TEST_F(UndoTest, ABudgetOfBytesDropsTheOldestGroupsAndTheRestStillWorks) {
  manager->setByteBudget(10 * 2 * sizeof(UndoAction));
  for (int number = 1; number <= 1000; ++number) set(number);
  EXPECT_EQ(manager->undoGroupCount(), 10u);
  manager->performInGroup([&] {
    for (int number = 1; number <= 500; ++number) cell->setNumber(number);
  });
  EXPECT_EQ(manager->undoGroupCount(), 1u);  // larger than the budget by itself, and still there
  manager->undo();
  expectNumbers(1000, -1000);
  const std::array<int, 64> large = {1, 2, 3};  // does not fit an action
  const std::size_t before = manager->undoBytes();
  manager->registerUndo("large", cell, [large](Cell& it) { it.setNumber(large[2]); });
  EXPECT_GE(manager->undoBytes(), before + sizeof(UndoAction) + sizeof large);
  manager->undo();
  EXPECT_EQ(cell->number, 3);
  EXPECT_EQ(manager->undoBytes(), before);
}

TEST_F(UndoTest, ActionsHoldTheirTargetsAndLetGoOfThem) {
  int released = 0;
  for (const bool undoes : {false, true}) {
    const Ref<Cell> held = make<Cell>(*manager);
    held->whenReleased = [&] { ++released; };
    held->setNumber(1);
    if (undoes) manager->undo();
  }
  EXPECT_EQ(released, 0);
  manager->removeAllActions();
  EXPECT_EQ(released, 2);
}

TEST_F(UndoTest, ReleasingMayCallTheManagerWhateverReleased) {
  // Each released cell registers, opens groups and clears, as a document that is taken apart may.
  const auto registerRestless = [&] {
    const Ref<Cell> restless = make<Cell>(*manager);
    restless->whenReleased = [this] {
      if (!manager->isUndoRegistrationEnabled()) return;
      manager->performInGroup([&] { cell->setNumber(cell->number + 1); });
      manager->removeAllActions();
      other->setNumber(other->number + 1);
    };
    restless->setNumber(1);
  };
  manager->setLevelsOfUndo(5);
  for (int round = 0; round < 200; ++round) registerRestless();
  manager->setLevelsOfUndo(0);
  for (int round = 0; round < 200; ++round) registerRestless();
  manager->removeAllActions();
  for (int round = 0; round < 100; ++round) registerRestless();
  for (int round = 0; round < 100; ++round) manager->undo();
  set(1);
  EXPECT_TRUE(manager->canUndo());
  manager->undo();
}

TEST_F(UndoTest, ClearingInTheMidstOfAnUndoEndsIt) {
  manager->performInGroup([&] {
    cell->setNumber(1);
    manager->registerUndo("clear", manager, [](NSUndoManager& it) { it.removeAllActions(); });
    other->setNumber(1);
  });
  manager->undo();
  expectNumbers(1, 0);
  EXPECT_FALSE(manager->canUndo());
  EXPECT_FALSE(manager->canRedo());
  EXPECT_FALSE(manager->isUndoingOrRedoing());
}

TEST_F(UndoTest, TheManagerMayDieOfWhatItReleases) {
  auto holder = std::make_shared<Ref<NSUndoManager>>(make<NSUndoManager>());
  NSUndoManager* const dying = holder->get();
  dying->registerUndo("die", cell, [holder](Cell&) { holder->reset(); });
  dying->undo();
  EXPECT_EQ(*holder, nullptr);
}

TEST_F(UndoTest, TheStacksCanBePrinted) {
  cell->setNumber(1);
  manager->beginUndoGrouping();
  cell->setNumber(2);
  manager->registerUndo("addStyle:", other, [](Cell&) {});
  const std::string c = format("<NSObject %p>", cell.get()), o = format("<NSObject %p>", other.get());
  EXPECT_EQ(manager->printableUndoStack(),
            "open group\n  addStyle: " + o + "\n  setNumber: " + c + "\ngroup 1\n  setNumber: " + c + "\n");
  EXPECT_EQ(manager->printableRedoStack(), "");
  manager->undo();
  EXPECT_EQ(manager->printableRedoStack(), "group 1\n  setNumber: " + c + "\n");
}

// Random use against a model that stores whole states.
TEST_F(UndoTest, RandomUseAgreesWithAListOfStates) {
  std::mt19937 random(7);
  std::vector<int> past, future;
  std::size_t levels = 1000;
  const auto change = [&] { cell->setNumber(static_cast<int>(random() % 1000)); };
  const auto step = [&](std::vector<int>& from, std::vector<int>& to, void (NSUndoManager::*move)()) {
    if (from.empty()) return;
    to.push_back(cell->number);
    (*manager.*move)();
    ASSERT_EQ(cell->number, from.back());
    from.pop_back();
  };
  for (int round = 0; round < 20'000; ++round) {
    const unsigned what = random() % 5;
    if (what == 2) step(past, future, &NSUndoManager::undo);
    if (what == 3) step(future, past, &NSUndoManager::redo);
    if (what == 4) manager->setLevelsOfUndo(levels = 1 + random() % 20);
    if (what < 2) {
      past.push_back(cell->number);
      future.clear();
      manager->performInGroup([&] {
        for (auto each = random() % 100 + 1; each > 0; --each) {
          each % 3 == 0 ? manager->performInGroup(change) : change();
        }
      });
    }
    for (auto* states : {&past, &future}) {
      if (states->size() > levels) states->erase(states->begin(), states->end() - static_cast<std::ptrdiff_t>(levels));
    }
    ASSERT_EQ(manager->undoGroupCount(), past.size()) << round;
    ASSERT_EQ(manager->redoGroupCount(), future.size()) << round;
    ASSERT_EQ(manager->undoBytes() == 0, past.empty()) << round;
  }
}

}  // namespace
}  // namespace zt
