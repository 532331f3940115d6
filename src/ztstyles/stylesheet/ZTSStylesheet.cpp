// SPDX-License-Identifier: MIT

// Making and destroying stylesheets, and their host.

#include <platform/ZTFirstFailure.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTYTrackable.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>
#include <ztstyles/references/ZTSDepartedStyles.h>
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

ZTSStylesheet::ZTSStylesheet() : mOrphans(std::make_unique<ZTSOrphanIndex>()) {}

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

  // What the styles do on leaving may reach any other of them: the registry holds all until all have left. Nothing is
  // allocated for it. An override that throws does not keep its link, since nothing may point at a stylesheet that is
  // gone.
  ZTFirstFailure passedOver;
  bool hasReferences = mDeparted && !mDeparted->isEmpty();
  const auto leave = [&](const Ref<ZTSStyle>& style) {
    hasReferences = hasReferences || ZTSDepartedStyles::concerns(*style);
    passedOver.attempt([&] { style->cleanup(); });
    if (style->stylesheet() == this) style->p_setStylesheet(nullptr);
  };
  for (const ZTSStyleDictionary::Entry& entry : mIdentifiedStyles) leave(Ref<ZTSStyle>(entry.style));
  for (ZTSStyle* style : mAnonymousStyles) leave(Ref<ZTSStyle>(style));
  while (ZTSStyle* style = mLinkedOnly.anyObject()) leave(Ref<ZTSStyle>(style));

  // What was removed earlier may be kept alive by nothing but a circle, too. Without memory such circles stay.
  mAnonymousStyleOrderingMap.reset();  // holds styles, which would count as held from outside
  std::vector<Ref<ZTSStyle>> held;
  if (hasReferences) {
    passedOver.attempt([&] {
      held = retainedStyles();
      if (!mDeparted) return;
      for (Ref<ZTSStyle>& style : mDeparted->retainedStyles()) held.push_back(std::move(style));
    });
  }
  mDeparted.reset();
  if (mParent) mParent->p_removeChild(*this);
  if (mHost != nullptr) mHost->mServed.removeObject(this);
  mIdentifiedStyles.removeAll();
  mAnonymousStyles.removeAllObjects();
  passedOver.attempt([&] { freeReferenceGroups(std::move(held)); });
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

}  // namespace zt
