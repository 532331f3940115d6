// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <functional>
#include <string>
#include <vector>

namespace zt {

/// One thing that a change set off.
struct ChangeEvent {
  enum class Kind : std::uint8_t {
    undoStep,   ///< an inverse was registered; `text` is the operation that it calls
    kept,       ///< a locked style took what it had inherited as its own, or gave it back on undo
    told,       ///< the change reached the style; its observers are being called
    observers,  ///< `text` names styles that refer to the style and were called as its observers
    posted      ///< the notification `text` was posted for the style
  };

  Kind kind = Kind::told;
  std::string style;                    ///< its label; empty for an undo step
  std::string text;                     ///< see the kinds
  std::vector<std::string> properties;  ///< the keys concerned; of a locked style with the values that it has now
};

/// "undo-step", "kept", ...
std::string_view eventKindName(ChangeEvent::Kind kind);

/// Watches all styles of a document while it lives, as an observer of each and as a listener of the
/// notification centre.
class ChangeTrace {
 public:
  enum class Phase : std::uint8_t { change, undo, redo };

  explicit ChangeTrace(ZTDocument& document);
  ~ChangeTrace();
  ChangeTrace(const ChangeTrace&) = delete;
  ChangeTrace& operator=(const ChangeTrace&) = delete;

  /// Does the work and answers what it set off, in order. Inverses and values that locked styles kept
  /// are noted as soon as the next event lets them be seen.
  std::vector<ChangeEvent> record(Phase phase, const std::function<void()>& work);

 private:
  class Watcher;
  struct LockedStyle {
    Ref<ZTSStyle> style;
    Ref<PropertyMap> own;
  };

  void note(ChangeEvent::Kind kind, const ZTSStyle& style, std::string text, std::vector<std::string> properties);
  void noteQuietOnes();
  void noteUndoSteps();
  void noteKept();
  [[nodiscard]] std::vector<std::string> undoSteps() const;

  ZTDocument& mDocument;
  std::unique_ptr<Watcher> mWatcher;
  std::vector<Ref<ZTSStyle>> mWatched;  // held, so that the watcher can leave them
  std::vector<LockedStyle> mLocked;
  std::vector<ChangeEvent> mEvents;
  Phase mPhase = Phase::change;
  std::size_t mStepsNoted = 0;
  std::size_t mBytesNoted = 0;
};

}  // namespace zt
