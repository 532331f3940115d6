// SPDX-License-Identifier: MIT

// The cleanup of unused styles.

#include <platform/NSException.h>
#include <platform/NSLog.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";

}  // namespace

void ZTSStylesheet::enableUnusedStyleCleanup() {
  const Ref<ZTSStylesheet> self(this);
  mStyleCleanupEnabled = true;
  if (!mUnused) mUnused = std::make_unique<ZTSUnusedStyles>(*this);
  NSUndoManager* undo = undoManager();
  if (undo == nullptr) ZT_REPORT("enableUnusedStyleCleanup", this, kSourceFile, "NIL undo manager");
  if (mUnused) mUnused->listen(undo);
}

void ZTSStylesheet::disableUnusedStyleCleanup() {
  mStyleCleanupEnabled = false;
  if (!mUnused) return;
  mUnused->listen(nullptr);
  if (!mUnused->isInPass()) mUnused.reset();
}

void ZTSStylesheet::p_cleanupUnusedStylesOnUndoGroupClose(const NSNotification& notification) {
  const auto* undo = dynamic_cast<const NSUndoManager*>(notification.object);
  if (undo != nullptr && undo->groupingLevel() == 1) cleanupUnusedStyles();
}

void ZTSStylesheet::cleanupUnusedStyles() {
  const Ref<ZTSStylesheet> self(this);
  const NSUndoManager* undo = undoManager();
  const bool isUndoingOrRedoing = undo != nullptr && undo->isUndoingOrRedoing();
  bool hasRemoved = false;
  const auto remove = [&](const Ref<ZTSStyle>& style) {
    ZTFirstFailure failure;
    const bool wentThrough = failure.attempt([&] { removeStyle(style); });
    hasRemoved = hasRemoved || wentThrough || !holdsStyle(*style);
    failure.rethrow();
  };
  const auto removeUnused = [&] {
    ZTSUnusedStyles::Pass pass(*this);
    // The host is asked for anew each time: it may die on the way, and then nobody agrees any more.
    for (Ref<ZTSStyle> style; mHost != nullptr && (style = pass.next());) {
      if (!mHost->willRemoveUnusedStyle(*style)) continue;
      if (isUndoingOrRedoing) {
        ZT_RAISE("cleanupUnusedStyles", this, kSourceFile, "%@ -- Cleaning up unused style <%p> during undo/redo.",
                 "cleanupUnusedStyles", address(style.get()));
      }
      if (holdsStyle(*style)) remove(style);  // else the host has removed it itself
    }
  };
  ZTFirstFailure failure;
  failure.attempt([&] {
    try {
      removeUnused();
    } catch (const NSException&) {
      NSLog("Error cleaning up unused styles for stylesheet %p", address(this));
    }
  });
  if (hasRemoved && mHost != nullptr) failure.attempt([&] { mHost->didRemoveUnusedStyles(); });
  failure.rethrow();
}

}  // namespace zt
