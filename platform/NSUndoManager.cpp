// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

namespace zt {

const NSNotificationName NSUndoManagerWillCloseUndoGroupNotification("NSUndoManagerWillCloseUndoGroupNotification");

const ZTClass& NSUndoManager::undoManagerClass() {
  static const ZTClass* object = new ZTClassOf<NSUndoManager>("NSUndoManager", nsObjectClass());
  return *object;
}

const ZTClass& NSUndoManager::classObject() const { return undoManagerClass(); }

NSUndoManager::~NSUndoManager() {
  ++mDisabled;  // what is released now may still call, and finds registration disabled
  mUndo.clear();
  mRedo.clear();
}

// --- Groups ---

void NSUndoManager::beginUndoGrouping() { ++mGroupingLevel; }

void NSUndoManager::endUndoGrouping() {
  if (mGroupingLevel == 0) {
    throw NSInternalInconsistencyException("endUndoGrouping -- called with no matching beginUndoGrouping.");
  }
  if (mGroupingLevel == 1 && isUndoingOrRedoing()) {
    throw NSInternalInconsistencyException(
        "endUndoGrouping -- attempted to close the group of an undo or redo under way.");
  }
  if (mGroupingLevel == mClosingLevel) {
    throw NSInternalInconsistencyException("endUndoGrouping -- attempted to close a group that is closing.");
  }
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  mUndo.makeRoomForMark();

  // Leaves the group whatever the listeners do: throw, or open groups and forget them.
  struct Leave {
    NSUndoManager& manager;
    const std::size_t level = manager.mGroupingLevel;
    const std::size_t outerClosingLevel = std::exchange(manager.mClosingLevel, manager.mGroupingLevel);
    ~Leave() {
      manager.mClosingLevel = outerClosingLevel;
      manager.mGroupingLevel = level - 1;
      if (level == 1) manager.mUndo.closeGroup();
    }
  };
  {
    const Leave leave{*this};
    NSNotificationCenter::defaultCenter().post(NSUndoManagerWillCloseUndoGroupNotification, this);
  }
  if (mGroupingLevel == 0) keepBudgets(mUndo);
}

// --- Registration ---

void NSUndoManager::refuseTarget(const char* keyword) {
  throw NSInvalidArgumentException(format("registerUndo -- no target for the action %s.", keyword));
}

void NSUndoManager::didRegister() {
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  if (mGroupingLevel == 0) mUndo.closeGroup();
  mRedo.clear();  // not while undoing or redoing: nobody calls then
  if (mGroupingLevel == 0) keepBudgets(mUndo);
}

void NSUndoManager::enableUndoRegistration() {
  if (mDisabled == 0) {
    throw NSInternalInconsistencyException(
        "enableUndoRegistration -- called with no matching disableUndoRegistration.");
  }
  --mDisabled;
}

void NSUndoManager::removeAllActions() {
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  mUndo.clear();
  mRedo.clear();
}

// --- Undo and redo ---

void NSUndoManager::requireIdle(const char* operation) const {
  if (isUndoingOrRedoing()) {
    throw NSInternalInconsistencyException(format("%s -- called during an undo or redo.", operation));
  }
  if (mClosingLevel != 0) {
    throw NSInternalInconsistencyException(format("%s -- called while an undo group is closing.", operation));
  }
}

void NSUndoManager::undo() {
  requireIdle("undo");
  if (mGroupingLevel > 1) {
    throw NSInternalInconsistencyException(format("undo -- called with %d undo groups open.", mGroupingLevel));
  }
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  if (mGroupingLevel == 1) endUndoGrouping();
  perform(mUndo, mRedo, mIsUndoing);
}

void NSUndoManager::redo() {
  requireIdle("redo");
  if (mGroupingLevel > 0) {
    throw NSInternalInconsistencyException(format("redo -- called with %d undo groups open.", mGroupingLevel));
  }
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  perform(mRedo, mUndo, mIsRedoing);
}

void NSUndoManager::perform(UndoStack& from, UndoStack& to, bool& isPerforming) {
  if (from.groupCount() == 0) return;
  to.makeRoomForMark();
  from.reopenGroup();

  // Closing what remains of the group that was performed, and the group of its inverses, needs no
  // memory: marks taken away left room, and `to` has made room.
  struct Finish {
    NSUndoManager& manager;
    UndoStack& from;
    UndoStack& to;
    bool& isPerforming;
    ~Finish() {
      manager.mClosingLevel = 0;
      isPerforming = false;
      manager.mGroupingLevel = 0;
      from.closeGroup();
      to.closeGroup();
    }
  };
  {
    const Finish finish{*this, from, to, isPerforming};
    isPerforming = true;
    mGroupingLevel = 1;
    const std::size_t clears = from.clearCount();
    while (from.hasOpenActions()) {
      UndoAction action = from.takeLast();
      try {
        action.run();
      } catch (...) {
        if (from.clearCount() == clears) from.putBack(std::move(action));
        throw;
      }
    }
    mClosingLevel = mGroupingLevel;
    NSNotificationCenter::defaultCenter().post(NSUndoManagerWillCloseUndoGroupNotification, this);
  }
  keepBudgets(to);
}

// --- Budgets ---

void NSUndoManager::setLevelsOfUndo(std::size_t groups) {
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  mLevelsOfUndo = groups;
  keepBudgets(mUndo);
  keepBudgets(mRedo);
}

void NSUndoManager::setByteBudget(std::size_t bytes) {
  const Ref<NSUndoManager> keptSelf = retainIfAlive(this);
  mByteBudget = bytes;
  keepBudgets(mUndo);
  keepBudgets(mRedo);
}

void NSUndoManager::keepBudgets(UndoStack& stack) {
  while ((mLevelsOfUndo != 0 && stack.groupCount() > mLevelsOfUndo) ||
         (mByteBudget != 0 && stack.groupCount() > 1 && stack.bytes() > mByteBudget)) {
    stack.dropOldestGroup();
  }
}

// --- Looking inside ---

namespace {

NSUndoManager::ActionNames namesOf(const UndoStack& stack) {
  NSUndoManager::ActionNames result;
  for (const auto& group : stack.groups()) {
    result.emplace_back();
    for (const UndoAction* action : group) result.back().emplace_back(action->keyword());
  }
  return result;
}

std::string printed(const UndoStack& stack) {
  const auto groups = stack.groups();
  std::string result;
  for (std::size_t at = groups.size(); at-- > 0;) {
    result += at < stack.groupCount() ? format("group %d\n", at + 1) : "open group\n";
    for (auto action = groups[at].rbegin(); action != groups[at].rend(); ++action) {
      result += format("  %s", (*action)->keyword());
      // Class and address: a full description may fill a page.
      if (const NSObject* target = (*action)->target())
        result += format(" <%@ %p>", target->classObject().name(), target);
      result += '\n';
    }
  }
  return result;
}

}  // namespace

NSUndoManager::ActionNames NSUndoManager::undoActionNames() const { return namesOf(mUndo); }
NSUndoManager::ActionNames NSUndoManager::redoActionNames() const { return namesOf(mRedo); }
std::string NSUndoManager::printableUndoStack() const { return printed(mUndo); }
std::string NSUndoManager::printableRedoStack() const { return printed(mRedo); }

}  // namespace zt
