// SPDX-License-Identifier: MIT

// What an aggregate observes, and what it gave for it.
//
// Each reference that is observed has a record: the property, the style, and the units of usage and orphans that the
// style took. Beginning adds to the record what is missing, ending takes back what the record says and nothing else, so
// that both may be repeated, and neither depends on what the value, the list of properties or the own counts have
// become meanwhile. A record keeps its style alive, since an observer must be able to leave it.
//
// Counting and observing may call operations of an application, which may change this aggregate again or throw. So no
// place in the list of records is kept across a call, and a step that throws does not keep the others from being taken;
// what could not be taken back stays recorded and is tried again by the next change.

#include <platform/NSAssertionHandler.h>
#include <platform/NSNull.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSStylesheet.h>

#include <algorithm>
#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSAggregateStyle";

}  // namespace

// What a style's own count says afterwards decides, also where the call threw. A class may count in some way of its
// own, though: a call that went through is believed unless the style was ignoring requests just then.
bool ZTSAggregateStyle::takesStep(ZTFirstFailure& failure, ZTSStyle& style, CountingStep step) {
  const bool isUsage = step == CountingStep::useUp || step == CountingStep::useDown;
  const auto count = [&] { return isUsage ? style.usageCount() : style.orphanCount(); };
  const bool isIgnoring = isUsage && style.isAdjustingUsageCount();
  const std::uint32_t before = count();
  const bool wentThrough = failure.attempt([&] {
    switch (step) {
      case CountingStep::useUp: return style.incrementUsageCount();
      case CountingStep::useDown: return style.decrementUsageCount();
      case CountingStep::orphanUp: return style.incrementOrphanCount();
      case CountingStep::orphanDown: return style.decrementOrphanCount();
    }
  });
  return count() != before || (wentThrough && !isIgnoring);
}

// ---- One reference

ZTSAggregateStyle::Reference* ZTSAggregateStyle::p_recordOf(PropertyKey key, const ZTSStyle& style) noexcept {
  const auto found = std::find_if(mReferences.begin(), mReferences.end(),
                                  [&](const Reference& each) { return each.key == key && each.style == &style; });
  return found != mReferences.end() ? &*found : nullptr;
}

void ZTSAggregateStyle::beginReference(ZTFirstFailure& failure, PropertyKey key, const Ref<ZTSStyle>& style) {
  if (p_recordOf(key, *style) == nullptr && !failure.attempt([&] { mReferences.push_back({key, style}); })) return;
  if (!p_recordOf(key, *style)->isObserved) {
    const auto times = [&] { return style->observers().countForObject(this); };
    const std::size_t before = times();
    failure.attempt([&] { style->addObserver(this); });
    if (Reference* record = p_recordOf(key, *style)) record->isObserved = times() != before;
  }
  if (Reference* record = p_recordOf(key, *style); record != nullptr && usageCount() != 0 && !record->hasUsageUnit) {
    const bool taken = takesStep(failure, *style, CountingStep::useUp);
    if ((record = p_recordOf(key, *style)) != nullptr) record->hasUsageUnit = taken;
  }
  if (Reference* record = p_recordOf(key, *style); record != nullptr && orphanCount() != 0 && !record->hasOrphanUnit) {
    const bool taken = takesStep(failure, *style, CountingStep::orphanUp);
    if ((record = p_recordOf(key, *style)) != nullptr) record->hasOrphanUnit = taken;
  }
}

void ZTSAggregateStyle::endReference(ZTFirstFailure& failure, PropertyKey key, const Ref<ZTSStyle>& style) {
  Reference* record = p_recordOf(key, *style);
  if (record == nullptr) return;
  // Out of the list before anybody is called, so that what is called finds it ended.
  Reference left = *record;
  mReferences.erase(mReferences.begin() + (record - mReferences.data()));
  if (left.hasUsageUnit) {
    left.hasUsageUnit = !takesStep(failure, *style, CountingStep::useDown);
  }
  if (left.hasOrphanUnit) {
    left.hasOrphanUnit = !takesStep(failure, *style, CountingStep::orphanDown);
  }
  if (left.isObserved) {
    const auto times = [&] { return style->observers().countForObject(this); };
    const std::size_t before = times();
    const bool wentThrough = failure.attempt([&] { style->removeObserver(this); });
    left.isObserved = !wentThrough && times() != 0 && times() == before;
  }
  if (left.isEmpty() || p_recordOf(key, *style) != nullptr) return;
  // Something threw, or the style ignores requests just now.
  mIsUnfinished = true;
  failure.attempt([&] { mReferences.push_back(left); });
}

void ZTSAggregateStyle::endReferences(ZTFirstFailure& failure, PropertyKey key, const ZTSStyle* butNotTo) {
  if (mReferences.empty()) return;
  std::vector<Ref<ZTSStyle>> styles;
  failure.attempt([&] {
    for (const Reference& each : mReferences) {
      if (each.key == key && each.style != butNotTo) styles.push_back(each.style);
    }
  });
  for (const Ref<ZTSStyle>& style : styles) endReference(failure, key, style);
}

void ZTSAggregateStyle::followValue(ZTFirstFailure& failure, PropertyKey key) {
  Ref<ZTSStyle> referenced;
  if (stylesheet() != nullptr) {
    const bool wasRead = failure.attempt([&] {
      if (isPuttingBack() && asStyle(overrideValueForProperty(key).get()) == nullptr) return;
      referenced = p_referencedStyleForProperty(key);
    });
    if (!wasRead) referenced.reset();
  }
  if (referenced == this) referenced.reset();
  ZTFirstFailure calling;
  endReferences(calling, key, referenced.get());
  if (referenced) beginReference(calling, key, referenced);
  if (!calling.hasFailed()) return;
  mIsUnfinished = true;
  failure.attempt([&] { calling.rethrow(); });
}

void ZTSAggregateStyle::p_beginObservingReferencedStyleForProperty(PropertyKey key) {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  followValue(failure, key);
  failure.rethrow();
}

void ZTSAggregateStyle::p_endObservingReferencedStyleForProperty(PropertyKey key) {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  endReferences(failure, key, nullptr);
  failure.rethrow();
}

// ---- All references

std::vector<PropertyKey> ZTSAggregateStyle::observedProperties() const {
  std::vector<PropertyKey> keys = referencedStyleProperties();
  for (const Reference& each : mReferences) {
    if (std::find(keys.begin(), keys.end(), each.key) == keys.end()) keys.push_back(each.key);
  }
  return keys;
}

void ZTSAggregateStyle::p_beginObservingAllReferencedStyles() {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  const bool knewProperties = failure.attempt([&] {
    for (PropertyKey key : observedProperties()) followValue(failure, key);
  });
  if (!knewProperties) mIsUnfinished = true;
  failure.rethrow();
}

void ZTSAggregateStyle::p_endObservingAllReferencedStyles() {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  const bool knewProperties = failure.attempt([&] {
    for (PropertyKey key : observedProperties()) endReferences(failure, key, nullptr);
  });
  if (!knewProperties) mIsUnfinished = true;
  failure.rethrow();
}

// ---- Changes of own values

// Undo puts back what was there, also what got there by a way that looks at nothing. Whoever reads it as a reference is
// told; undo itself must not fail over it.
bool ZTSAggregateStyle::isPuttingBack() const {
  const NSUndoManager* undo = undoManager();
  return undo != nullptr && undo->isUndoingOrRedoing();
}

void ZTSAggregateStyle::entriesWillChange(ZTSEntriesChange& change) {
  const Ref<ZTSAggregateStyle> self(this);
  const bool isChecked = change.way == ZTSEntriesChange::Way::undoable && !change.isRemoval && !isPuttingBack();
  const auto requireStyle = [&](PropertyKey key, NSObject* value) {
    if (!isChecked || value == nullptr || isNull(value) || asStyle(value) != nullptr || !isReferencedStyleProperty(key))
      return;
    ZT_RAISE(change.operation, this, kSourceFile, "not a style");
  };
  change.forEachKey([&](PropertyKey key) {
    requireStyle(key, change.values ? change.values->find(key) : change.value.get());
    p_endObservingReferencedStyleForProperty(key);
  });
}

void ZTSAggregateStyle::entriesDidChange(const ZTSEntriesChange& change) {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  if (mReferences.empty() && referencedStyleProperties().empty()) return;
  if (std::exchange(mIsUnfinished, false) || !isPlain(ZTSStyleClass::libraryReading)) {
    // What an earlier change could not reach is tried again. And a class that reads in its own way may show a reference
    // under another key than the one that was stored.
    for (PropertyKey key : observedProperties()) followValue(failure, key);
  } else {
    change.forEachKey([&](PropertyKey key) { followValue(failure, key); });
  }
  failure.rethrow();
}

// ---- The stylesheet

template <class Assign>
void ZTSAggregateStyle::relink(Assign assign) {
  const Ref<ZTSAggregateStyle> self(this);
  ZTFirstFailure failure;
  failure.attempt([&] { p_endObservingAllReferencedStyles(); });
  failure.attempt(assign);
  failure.attempt([&] { p_beginObservingAllReferencedStyles(); });
  failure.rethrow();
}

void ZTSAggregateStyle::setStylesheet(ZTSStylesheet* stylesheet) {
  relink([&] { ZTSStyle::setStylesheet(stylesheet); });
}

void ZTSAggregateStyle::archivingSetStylesheet(ZTSStylesheet* stylesheet) {
  relink([&] { ZTSStyle::archivingSetStylesheet(stylesheet); });
}

void ZTSAggregateStyle::letGoOfReferences() noexcept {
  while (!mReferences.empty()) {
    const Reference last = std::move(mReferences.back());
    mReferences.pop_back();
    ZTFirstFailure failure;
    if (last.hasUsageUnit) failure.attempt([&] { last.style->decrementUsageCount(); });
    if (last.hasOrphanUnit) failure.attempt([&] { last.style->decrementOrphanCount(); });
    if (last.isObserved) failure.attempt([&] { last.style->removeObserver(this); });
    if (last.isObserved && last.style->observers().containsObject(this))
      failure.attempt([&] { last.style->ZTSStyle::removeObserver(this); });
    if (!failure.hasFailed()) continue;
    failure.attempt([&] {
      ZTULog_Fn(kZTULogFailure, kSourceFile, "Style <%p> could not let go of what its property %@ refers to.",
                address(this), last.key);
    });
  }
}

ZTSAggregateStyle::~ZTSAggregateStyle() {
  // Observation ends when the style leaves its stylesheet, which is before it can die, unless a class kept that from
  // happening or a reference refused to let go.
  letGoOfReferences();
}

void ZTSAggregateStyle::cleanup() {
  letGoOfReferences();
  ZTSStyle::cleanup();
}

}  // namespace zt
