// SPDX-License-Identifier: MIT

// Telling what happens to a stylesheet, the questions of change tracking, and the document hooks.
//
// A broadcast first collects whom it will call, then calls them. Its arguments and its list stand on the
// stack, so that an observer may itself add, remove or re-parent; without observers nothing is allocated.

#include <platform/ZTFirstFailure.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTYTrackable.h>

#include <boost/container/small_vector.hpp>

namespace zt {

namespace {

struct Told {
  Ref<ZTSStylesheet> stylesheet;
  ZTSStylesheetObserver* observer;  // not held, and possibly gone: called only while it is still registered
};
using ToldList = boost::container::small_vector<Told, 8>;

/// The observers of the stylesheet and of everything below it, depth-first: those below a stylesheet stand
/// before its own.
ToldList observersBelow(ZTSStylesheet& stylesheet) {
  using Place = decltype(stylesheet.children().begin());
  struct Level {
    ZTSStylesheet* stylesheet;
    Place next;
  };
  ToldList told;
  boost::container::small_vector<Level, 8> levels;
  levels.push_back({&stylesheet, stylesheet.children().begin()});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next != level.stylesheet->children().end()) {
      ZTSStylesheet* child = *level.next;
      ++level.next;
      levels.push_back({child, child->children().begin()});
      continue;
    }
    for (ZTSStylesheetObserver* observer : level.stylesheet->observers()) {
      if (Ref<ZTSStylesheet> held = retainIfAlive(level.stylesheet)) told.push_back({std::move(held), observer});
    }
    levels.pop_back();
  }
  return told;
}

/// Tells the observers, whatever some of them throw, then posts.
template <class Call, class MakeUserInfo>
void broadcast(ZTSStylesheet& stylesheet, Call call, const NSNotificationName& name, MakeUserInfo makeUserInfo) {
  ZTFirstFailure failure;
  if (!stylesheet.observers().isEmpty() || !stylesheet.children().isEmpty()) {
    failure.attempt([&] {
      for (const Told& each : observersBelow(stylesheet)) {
        if (!each.stylesheet->observers().containsObject(each.observer)) continue;
        failure.attempt([&] { call(*each.observer); });
      }
    });
  }
  failure.attempt([&] { NSNotificationCenter::defaultCenter().postIfHeard(name, &stylesheet, makeUserInfo); });
  failure.rethrow();
}

Ref<NSDictionary> styleUserInfo(ZTSStyle& style) {
  static const StringRef key(ZTSStylesheetNotificationStyleKey);
  return NSDictionary::make(key, Ref<NSObject>(&style));
}

}  // namespace

// ---- Broadcasts

void ZTSStylesheet::tellStyleAdded(ZTSStyle& style) {
  broadcast(
      *this, [&](ZTSStylesheetObserver& observer) { observer.addedStyleToStylesheet(style, *this); },
      ZTSStylesheetStyleAddedNotification, [&] { return styleUserInfo(style); });
}

void ZTSStylesheet::tellStyleRemoved(ZTSStyle& style) {
  broadcast(
      *this, [&](ZTSStylesheetObserver& observer) { observer.removedStyleFromStylesheet(style, *this); },
      ZTSStylesheetStyleRemovedNotification, [&] { return styleUserInfo(style); });
}

void ZTSStylesheet::tellParentChanged() {
  const Ref<ZTSStylesheet> self(this);
  broadcast(
      *this, [&](ZTSStylesheetObserver& observer) { observer.changedParentOfStylesheet(*this); },
      ZTSStylesheetParentChangedNotification, [] { return Ref<NSDictionary>(); });
}

// ---- Change tracking

const ZTYTrackable* ZTSStylesheet::changeTracker() const {
  if (mHost == nullptr) return nullptr;
  switch (mChangeTracker) {
    case Tracker::host: return dynamic_cast<const ZTYTrackable*>(mHost);
    case Tracker::document: return dynamic_cast<const ZTYTrackable*>(mHost->document());
    case Tracker::none: break;
  }
  return nullptr;
}

bool ZTSStylesheet::isTrackingChanges() const {
  const ZTYTrackable* tracker = changeTracker();
  return tracker != nullptr && tracker->isTrackingChanges();
}

NSObject* ZTSStylesheet::currentChangeTrackingSession() const {
  const ZTYTrackable* tracker = changeTracker();
  return tracker != nullptr ? tracker->currentChangeTrackingSession() : nullptr;
}

bool ZTSStylesheet::changeTrackingHasChanges() const { return false; }
NSObject* ZTSStylesheet::changeTrackingChanges() const { return nullptr; }
void ZTSStylesheet::acceptAllChanges() {}
void ZTSStylesheet::rejectAllChanges() {}

// ---- Document hooks: every style, identified ones first, whatever some of them throw

namespace {

template <class Hook>
void callOnStyles(const ZTSStylesheet& stylesheet, Hook hook) {
  ZTFirstFailure failure;
  stylesheet.makeStylesPerform([&](ZTSStyle& style) { failure.attempt([&] { hook(style); }); });
  failure.rethrow();
}

}  // namespace

void ZTSStylesheet::willBeAddedToDocument(NSDocument* document, NSObject* context) {
  callOnStyles(*this, [&](ZTSStyle& style) { style.willBeAddedToDocument(document, context); });
}

void ZTSStylesheet::wasAddedToDocument(NSDocument* document, NSObject* context) {
  callOnStyles(*this, [&](ZTSStyle& style) { style.wasAddedToDocument(document, context); });
}

void ZTSStylesheet::willBeRemovedFromDocument(NSDocument* document) {
  callOnStyles(*this, [&](ZTSStyle& style) { style.willBeRemovedFromDocument(document); });
}

void ZTSStylesheet::wasRemovedFromDocument(NSDocument* document) {
  callOnStyles(*this, [&](ZTSStyle& style) { style.wasRemovedFromDocument(document); });
}

// ---- The observers' own operations: nothing unless overridden

void ZTSStyleObserver::stylePropertiesChanged(const ZTSStyleChangeInfo&) {}
void ZTSStyleObserver::didReplaceStyleWithStyle(ZTSStyle*, ZTSStyle*) {}
ZTSStyleObserver::~ZTSStyleObserver() = default;

void ZTSStylesheetObserver::addedStyleToStylesheet(ZTSStyle&, ZTSStylesheet&) {}
void ZTSStylesheetObserver::removedStyleFromStylesheet(ZTSStyle&, ZTSStylesheet&) {}
void ZTSStylesheetObserver::changedParentOfStylesheet(ZTSStylesheet&) {}
ZTSStylesheetObserver::~ZTSStylesheetObserver() = default;

}  // namespace zt
