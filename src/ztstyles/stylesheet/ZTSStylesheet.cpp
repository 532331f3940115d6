// SPDX-License-Identifier: MIT

// Making and destroying stylesheets, and their host.

#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTYTrackable.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>
#include <ztstyles/references/ZTSReferenceGroups.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

namespace zt {

const NSNotificationName ZTSStylesheetStyleAddedNotification("ZTSStylesheetStyleAddedNotification");
const NSNotificationName ZTSStylesheetStyleRemovedNotification("ZTSStylesheetStyleRemovedNotification");
const NSNotificationName ZTSStylesheetParentChangedNotification("ZTSStylesheetParentChangedNotification");

const ZTClass& ZTSStylesheet::stylesheetClass() {
  static const ZTClass* object = new ZTClassOf<ZTSStylesheet>("ZTSStylesheet", nsObjectClass());
  return *object;
}

const ZTClass& ZTSStylesheet::classObject() const { return stylesheetClass(); }

ZTSStylesheet::ZTSStylesheet() = default;

Ref<ZTSStylesheet> ZTSStylesheet::withHost(ZTSStylesheetHost* host) {
  Ref<ZTSStylesheet> stylesheet(new ZTSStylesheet);
  if (!stylesheet->initWithHost(host)) return {};
  return stylesheet;
}

bool ZTSStylesheet::initWithHost(ZTSStylesheetHost* host) {
  p_setParent({});
  p_setHost(host);
  mIsChangeCommunicationEnabled = true;
  mStyleCleanupEnabled = false;
  return true;
}

ZTSStylesheet::~ZTSStylesheet() {
  intrusive_ptr_add_ref(this);  // whoever is handed this stylesheet by what follows must not end it again
  NSNotificationCenter::defaultCenter().removeObserver(this);
  mUnused.reset();  // ends the registration for the cleanup
  mVariations.reset();
  // What the styles do on leaving may reach any other of them: all are held until all have left.
  std::vector<Ref<ZTSStyle>> held = retainedStyles();
  bool hasReferences = false;
  for (const Ref<ZTSStyle>& style : held) {
    hasReferences = hasReferences || asAggregateStyle(style.get()) != nullptr;
    try {
      style->cleanup();
    } catch (...) {
      // An override failed; the link goes all the same, since nothing may point at a stylesheet that is gone.
    }
    style->p_setStylesheet(nullptr);
  }
  if (mParent) mParent->p_removeChild(*this);
  if (mHost != nullptr) mHost->mServed.removeObject(this);
  mIdentifiedStyles.removeAll();
  mAnonymousStyles.removeAllObjects();
  // What was removed earlier may be kept alive by nothing but a cycle, too.
  for (Ref<ZTSStyle>& style : mDeparted.retainedSnapshot()) {
    static_cast<ZTSAggregateStyle&>(*style).mDepartedFrom = nullptr;
    held.push_back(std::move(style));
    hasReferences = true;
  }
  mDeparted.removeAllObjects();
  if (hasReferences) freeReferenceGroups(std::move(held));
}

void ZTSStylesheet::p_setHost(ZTSStylesheetHost* host) {
  if (mHost != nullptr) mHost->mServed.removeObject(this);
  mHost = host;
  mChangeTracker = Tracker::none;
  if (host == nullptr) return;
  host->mServed.addObject(this);
  if (dynamic_cast<ZTYTrackable*>(host) != nullptr) {
    mChangeTracker = Tracker::host;
  } else if (dynamic_cast<ZTYTrackable*>(host->document()) != nullptr) {
    mChangeTracker = Tracker::document;
  }
}

NSUndoManager* ZTSStylesheet::undoManager() const { return mHost != nullptr ? mHost->undoManager() : nullptr; }

NSDocument* ZTSStylesheet::document() const { return mHost != nullptr ? mHost->document() : nullptr; }

ZTSOrphanIndex& ZTSStylesheet::orphans() {
  if (!mOrphans) mOrphans = std::make_unique<ZTSOrphanIndex>();
  return *mOrphans;
}

bool ZTSStylesheet::indexesAreRight() const {
  if (mOrphans ? !mOrphans->check(styles()) : orphanStyles().count() != 0) return false;
  if (mVariations && !mVariations->check(*this)) return false;
  return !mUnused || mUnused->check(*this);
}

}  // namespace zt
