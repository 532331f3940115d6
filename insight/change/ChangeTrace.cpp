// SPDX-License-Identifier: MIT
#include <insight/change/ChangeTrace.h>

#include <insight/explain/Explanation.h>

#include <ztstyles/ZTSStyleChangeInfo.h>

namespace zt {

namespace {

std::vector<std::string> keysOf(const ZTSStyleChangeInfo& change) {
  std::vector<std::string> keys;
  change.changedProperties()->forEach([&](PropertyKey key) { keys.emplace_back(key.view()); });
  return keys;
}

}  // namespace

std::string_view eventKindName(ChangeEvent::Kind kind) {
  switch (kind) {
    case ChangeEvent::Kind::undoStep: return "undo-step";
    case ChangeEvent::Kind::kept: return "kept";
    case ChangeEvent::Kind::told: return "told";
    case ChangeEvent::Kind::observers: return "observers";
    case ChangeEvent::Kind::posted: return "posted";
  }
  return "told";
}

class ChangeTrace::Watcher : public ZTSStyleObserver {
 public:
  explicit Watcher(ChangeTrace& trace)
      : mTrace(trace),
        mListener(ZTSStylePropertiesChangedNotification, nullptr, [this](const NSNotification& notification) {
          const auto* change =
              dynamic_cast<const ZTSStyleChangeInfo*>(notification.userInfoForKey(ZTSStyleNotificationChangeInfoKey));
          const ZTSStyle* style = asStyle(notification.object);
          if (change == nullptr || style == nullptr || style->document() != mTrace.mDocument.document()) return;
          mTrace.note(ChangeEvent::Kind::posted, *style, notification.name.text(), keysOf(*change));
        }) {}
  ~Watcher() override = default;

  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    const ZTSStyle& style = *change.style();
    mTrace.note(ChangeEvent::Kind::told, style, {}, keysOf(change));
    std::string names;
    for (ZTSStyleObserver* observer : style.observers().allObjects()) {
      const auto* referring = dynamic_cast<const ZTSStyle*>(observer);
      if (referring != nullptr) names += (names.empty() ? "" : ", ") + mTrace.mDocument.labelOf(*referring);
    }
    if (!names.empty()) mTrace.note(ChangeEvent::Kind::observers, style, names, {});
  }

 private:
  ChangeTrace& mTrace;
  NotificationListener mListener;
};

ChangeTrace::ChangeTrace(ZTDocument& document) : mDocument(document), mWatcher(std::make_unique<Watcher>(*this)) {
  for (const ZTSStylesheet* stylesheet : {&document.defaults(), &document.stylesheet()}) {
    for (ZTSStyle* style : stylesheet->styles()) {
      style->addObserver(mWatcher.get());
      mWatched.emplace_back(style);
    }
  }
}

ChangeTrace::~ChangeTrace() {
  for (const Ref<ZTSStyle>& style : mWatched) style->removeObserver(mWatcher.get());
}

std::vector<ChangeEvent> ChangeTrace::record(Phase phase, const std::function<void()>& work) {
  mPhase = phase;
  mStepsNoted = undoSteps().size();
  mBytesNoted = 0;
  mLocked.clear();
  for (const Ref<ZTSStyle>& style : mWatched) {
    if (!style->isLocked()) continue;
    const Ref<const PropertyMap> own = style->overridePropertyMap();
    mLocked.push_back({style, own ? own->copy() : PropertyMap::make()});
  }
  work();
  noteQuietOnes();
  return std::exchange(mEvents, {});
}

void ChangeTrace::note(ChangeEvent::Kind kind, const ZTSStyle& style, std::string text,
                       std::vector<std::string> properties) {
  noteQuietOnes();
  mEvents.push_back({kind, mDocument.labelOf(style), std::move(text), std::move(properties)});
}

/// What happens without a call to anybody outside.
void ChangeTrace::noteQuietOnes() {
  noteUndoSteps();
  noteKept();
}

/// The operations that take back what is done in this phase, from the oldest.
std::vector<std::string> ChangeTrace::undoSteps() const {
  const NSUndoManager& manager = *mDocument.undoManager();
  std::vector<std::string> steps;
  for (auto& group : mPhase == Phase::undo ? manager.redoActionNames() : manager.undoActionNames()) {
    steps.insert(steps.end(), group.begin(), group.end());
  }
  return steps;
}

void ChangeTrace::noteUndoSteps() {
  const NSUndoManager& manager = *mDocument.undoManager();
  const std::size_t bytes = mPhase == Phase::undo ? manager.redoBytes() : manager.undoBytes();
  if (std::exchange(mBytesNoted, bytes) == bytes) return;
  const std::vector<std::string> steps = undoSteps();
  for (; mStepsNoted < steps.size(); ++mStepsNoted) {
    mEvents.push_back({ChangeEvent::Kind::undoStep, {}, steps[mStepsNoted], {}});
  }
}

void ChangeTrace::noteKept() {
  for (LockedStyle& locked : mLocked) {
    const Ref<const PropertyMap> live = locked.style->overridePropertyMap();
    const Ref<PropertyMap> own = live ? live->copy() : PropertyMap::make();
    if (own->isEqual(*locked.own)) continue;
    ChangeEvent event{ChangeEvent::Kind::kept, mDocument.labelOf(*locked.style), {}, {}};
    for (const auto& [key, value] : *own) {
      const NSObject* before = locked.own->find(key);
      if (sameOrEqual(before, value.get())) continue;
      event.properties.push_back(key.string().text() + " = " + shownValue(mDocument, key, value.get()));
    }
    for (const auto& [key, value] : *locked.own) {
      if (!own->contains(key)) event.properties.push_back(key.string().text() + " inherited again");
    }
    mEvents.push_back(std::move(event));
    locked.own = own;
  }
}

}  // namespace zt
