// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSNotificationCenter.h>
#include <platform/NSObject.h>
#include <platform/ZTUndoStack.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zt {

/// Posted before an undo group closes, the outermost or an inner one, with the manager as object.
/// `groupingLevel` still counts the group; what is registered now belongs to it. The group of an undo or a redo posts
/// it too, when its actions have been performed: `isUndoingOrRedoing` still says so.
ZT_EXPORT extern const NSNotificationName NSUndoManagerWillCloseUndoGroupNotification;

/// Records how to take changes back. Whoever changes something registers the inverse; registrations
/// between `beginUndoGrouping` and the `endUndoGrouping` that belongs to it form a group, and `undo`
/// performs the inverses of one outermost group, the latest first. What they register in turn forms
/// the group that `redo` performs.
///
/// Belongs to one thread at a time. Actions hold their targets and whatever their closures hold,
/// until they are performed or dropped. Releasing them may run destructors that call the manager.
class ZT_EXPORT NSUndoManager : public NSObject {
 public:
  NSUndoManager() = default;

  const ZTClass& classObject() const override;
  static const ZTClass& undoManagerClass();

  /// @name Groups
  /// @{

  /// Opens a group, inside the open one if there is one.
  void beginUndoGrouping();

  /// Closes the innermost group: posts `NSUndoManagerWillCloseUndoGroupNotification`, then leaves
  /// the group. An outermost group without actions leaves nothing behind. Raises
  /// `NSInternalInconsistencyException` if no group is open, if the only open one is that of an undo
  /// or redo under way, or if the group is closing already. If a listener throws, the group is
  /// closed all the same and the exception goes on to the caller.
  void endUndoGrouping();

  /// How many groups are open: 0 outside of all, 1 in the outermost. An undo or redo counts as one.
  [[nodiscard]] std::size_t groupingLevel() const noexcept { return mGroupingLevel; }

  /// Does the work in a group of its own, which is closed whether or not the work throws.
  template <class Work>
  void performInGroup(Work&& work) {
    beginUndoGrouping();
    try {
      work();
    } catch (...) {
      endUndoGrouping();
      throw;
    }
    endUndoGrouping();
  }
  /// @}

  /// @name Registration
  /// @{

  /// Records that `action(*target)` takes back what is about to change. `keyword` is the name of the
  /// operation that the action calls, such as "setName:"; it must live for ever, as a literal does.
  ///
  /// Without an open group the action forms a group of its own, for which nothing is posted. Outside
  /// of undo and redo a registration drops all that could be redone. Does nothing while registration
  /// is disabled. An action may be run more than once if it throws, so it must not use up what it holds.
  ///
  /// Cost: one construction in a flat list; 48 bytes if what `action` holds fits 24 bytes and moves
  /// without throwing, else one allocation more.
  template <class Target, class Action>
  void registerUndo(const char* keyword, Ref<Target> target, Action&& action) {
    if (mDisabled != 0) return;
    if (target == nullptr) refuseTarget(keyword);
    (mIsUndoing ? mRedo : mUndo).emplace(keyword, std::move(target), std::forward<Action>(action));
    if (mGroupingLevel == 0 || (!isUndoingOrRedoing() && !mRedo.isEmpty())) didRegister();
  }

  [[nodiscard]] bool isUndoRegistrationEnabled() const noexcept { return mDisabled == 0; }
  /// The manager if it takes registrations now; none if not, and without one.
  [[nodiscard]] static NSUndoManager* ifRegistering(NSUndoManager* manager) noexcept {
    return manager != nullptr && manager->isUndoRegistrationEnabled() ? manager : nullptr;
  }

  /// Counted: registration is on again after as many calls of `enableUndoRegistration`.
  void disableUndoRegistration() noexcept { ++mDisabled; }

  /// Raises `NSInternalInconsistencyException` if registration is not disabled.
  void enableUndoRegistration();

  /// Releases all actions, those of an open group too; open groups stay open. During an undo or a
  /// redo the rest of the group under way is not performed.
  void removeAllActions();
  /// @}

  /// @name Undo and redo
  /// @{

  /// Performs the actions of the newest outermost group, the latest first; does nothing if there is
  /// none. With one group open it closes that first, notification included. Raises
  /// `NSInternalInconsistencyException` with more groups open, during an undo or a redo, and while
  /// a group is closing.
  ///
  /// If an action throws, nothing is posted, the exception goes on to the caller and nothing is lost: the manager is no
  /// longer undoing, the action and those that were not performed remain the newest group to undo,
  /// and the inverses registered so far are the newest group to redo.
  void undo();

  /// The same for the newest group that was undone. Raises with any group open.
  void redo();

  /// Whether there is something to undo, in an open group or in a closed one.
  [[nodiscard]] bool canUndo() const noexcept { return !mUndo.isEmpty(); }
  [[nodiscard]] bool canRedo() const noexcept { return !mRedo.isEmpty(); }
  [[nodiscard]] bool isUndoing() const noexcept { return mIsUndoing; }
  [[nodiscard]] bool isRedoing() const noexcept { return mIsRedoing; }
  [[nodiscard]] bool isUndoingOrRedoing() const noexcept { return mIsUndoing || mIsRedoing; }
  /// @}

  /// @name Budgets
  /// When a group closes, the oldest ones are dropped until both budgets hold. What remains can be
  /// undone as before. 0 stands for no limit.
  /// @{

  void setLevelsOfUndo(std::size_t groups);
  [[nodiscard]] std::size_t levelsOfUndo() const noexcept { return mLevelsOfUndo; }

  /// In bytes of the actions themselves, for each of the two stacks; what the held objects take is
  /// not counted. The newest group stays even if it is larger.
  void setByteBudget(std::size_t bytes);
  [[nodiscard]] std::size_t byteBudget() const noexcept { return mByteBudget; }
  /// @}

  /// @name Looking inside
  /// @{

  [[nodiscard]] std::size_t undoGroupCount() const noexcept { return mUndo.groupCount(); }
  [[nodiscard]] std::size_t redoGroupCount() const noexcept { return mRedo.groupCount(); }
  [[nodiscard]] std::size_t undoBytes() const noexcept { return mUndo.bytes(); }
  [[nodiscard]] std::size_t redoBytes() const noexcept { return mRedo.bytes(); }

  using ActionNames = std::vector<std::vector<std::string>>;

  /// The keyword names, groups from the oldest to the open one, actions in the order of registration.
  [[nodiscard]] ActionNames undoActionNames() const;
  [[nodiscard]] ActionNames redoActionNames() const;

  /// A text with one line a group and one line an action with its target, in the order in which
  /// `undo` would perform them; empty for an empty stack.
  [[nodiscard]] std::string printableUndoStack() const;
  [[nodiscard]] std::string printableRedoStack() const;
  /// @}

 protected:
  ~NSUndoManager() override;

 private:
  [[noreturn]] static void refuseTarget(const char* keyword);
  void didRegister();
  void perform(UndoStack& from, UndoStack& to, bool& isPerforming);
  void requireIdle(const char* operation) const;
  void keepBudgets(UndoStack& stack);

  UndoStack mUndo;
  UndoStack mRedo;
  std::size_t mGroupingLevel = 0;
  std::size_t mClosingLevel = 0;  // the level whose will-close notification is being posted
  std::size_t mLevelsOfUndo = 0;
  std::size_t mByteBudget = 0;
  std::uint32_t mDisabled = 0;
  bool mIsUndoing = false;
  bool mIsRedoing = false;
};

}  // namespace zt
