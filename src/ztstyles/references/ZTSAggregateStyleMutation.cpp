// Changes of an aggregate's own values and of its stylesheet: the observation and counting of what it refers to
// ends before and begins again after.

#include <platform/NSAssertionHandler.h>
#include <platform/NSNull.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/references/ZTSObservationPause.h>

#include <algorithm>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSAggregateStyle";

void requireStyle(const ZTSAggregateStyle& aggregate, const char* operation, NSObject* value, PropertyKey key) {
  if (value == nullptr || !aggregate.isReferencedStyleProperty(key) || isNull(value) || asStyle(value) != nullptr)
    return;
  ZT_RAISE(operation, &aggregate, kSourceFile, "not a style");
}

/// The keys in the map's order, for a walk during which the map may change.
boost::container::small_vector<PropertyMap::Entry, 8> entriesOf(const PropertyMap& values) {
  return {values.begin(), values.end()};
}

}  // namespace

// ---- One reference

void ZTSAggregateStyle::p_beginObservingReferencedStyleForProperty(PropertyKey key) {
  const Ref<ZTSStyle> referenced = p_referencedStyleForProperty(key);
  if (!referenced || referenced == this) return;
  if (stylesheet() == nullptr) return;
  referenced->addObserver(this);
  if (usageCount() != 0) referenced->incrementUsageCount();
  if (orphanCount() != 0) referenced->incrementOrphanCount();
}

void ZTSAggregateStyle::p_endObservingReferencedStyleForProperty(PropertyKey key) {
  const Ref<ZTSStyle> referenced = p_referencedStyleForProperty(key);
  if (!referenced || referenced == this) return;
  if (stylesheet() == nullptr) return;
  if (usageCount() != 0) referenced->decrementUsageCount();
  if (orphanCount() != 0) referenced->decrementOrphanCount();
  referenced->removeObserver(this);
}

void ZTSAggregateStyle::p_beginObservingAllReferencedStyles() {
  for (PropertyKey key : referencedStyleProperties()) p_beginObservingReferencedStyleForProperty(key);
}

void ZTSAggregateStyle::p_endObservingAllReferencedStyles() {
  for (PropertyKey key : referencedStyleProperties()) p_endObservingReferencedStyleForProperty(key);
}

// ---- The pause

thread_local constinit ZTSObservationPause* ZTSObservationPause::tInnermost = nullptr;

ZTSObservationPause::~ZTSObservationPause() {
  try {
    if (!mIsDone) beginAgain();
  } catch (...) {
    // What made the change fail is on its way already and says more.
  }
  tInnermost = mOuter;
}

ZTSObservationPause* ZTSObservationPause::covering(ZTSObservationPause* pause, const ZTSAggregateStyle& style,
                                                   PropertyKey key) noexcept {
  for (; pause != nullptr; pause = pause->mOuter) {
    if (pause->mStyle != &style || pause->mIsDone) continue;
    if (pause->mIsAll) return pause;
    const auto waiting = pause->mKeys.begin() + static_cast<std::ptrdiff_t>(pause->mBegun);
    if (std::find(waiting, pause->mKeys.end(), key) != pause->mKeys.end()) return pause;
  }
  return nullptr;
}

void ZTSObservationPause::end(PropertyKey key) {
  if (ZTSObservationPause* outer = covering(mOuter, *mStyle, key)) {
    outer->mHidAChange = true;
    return;
  }
  mStyle->p_endObservingReferencedStyleForProperty(key);
  mKeys.push_back(key);
}

void ZTSObservationPause::endAll() {
  for (PropertyKey key : mStyle->referencedStyleProperties()) end(key);
  mIsAll = true;
}

void ZTSObservationPause::beginAgain() {
  if (mIsAll) {
    // What the class refers to may have changed with the stylesheet.
    mIsAll = false;
    mKeys.clear();
    for (PropertyKey key : mStyle->referencedStyleProperties()) {
      if (covering(mOuter, *mStyle, key) == nullptr) mKeys.push_back(key);
    }
  }
  while (mBegun < mKeys.size()) mStyle->p_beginObservingReferencedStyleForProperty(mKeys[mBegun++]);
  mIsDone = true;
}

// ---- Own values

void ZTSAggregateStyle::setValueForProperty(Ref<NSObject> value, PropertyKey key) {
  requireStyle(*this, "setValue:forProperty:", value.get(), key);
  ZTSObservationPause pause(*this);
  pause.end(key);
  ZTSStyle::setValueForProperty(std::move(value), key);
  pause.beginAgain();
}

void ZTSAggregateStyle::setValuesForProperties(const PropertyMap& values) {
  const Ref<const PropertyMap> held(&values);
  ZTSObservationPause pause(*this);
  for (const PropertyMap::Entry& entry : entriesOf(values)) {
    requireStyle(*this, "setValuesForProperties:", entry.value.get(), entry.key);
    pause.end(entry.key);
  }
  ZTSStyle::setValuesForProperties(values);
  pause.beginAgain();
}

void ZTSAggregateStyle::removeValueForProperty(PropertyKey key) {
  ZTSObservationPause pause(*this);
  pause.end(key);
  ZTSStyle::removeValueForProperty(key);
  pause.leaveEnded();
}

void ZTSAggregateStyle::removeValuesForProperties(const PropertySet& keys) {
  const Ref<const PropertySet> held(&keys);
  ZTSObservationPause pause(*this);
  for (PropertyKey key : keys.keys()) pause.end(key);
  ZTSStyle::removeValuesForProperties(keys);
  pause.leaveEnded();
}

void ZTSAggregateStyle::lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags) {
  const Ref<const PropertyMap> held(&values);
  ZTSObservationPause pause(*this);
  for (const PropertyMap::Entry& entry : entriesOf(values)) pause.end(entry.key);
  ZTSStyle::lockedStyleSetValuesForProperties(values, flags);
  pause.beginAgain();
}

void ZTSAggregateStyle::lockedStyleRemoveValuesForProperties(const PropertySet& keys, std::int32_t flags) {
  const Ref<const PropertySet> held(&keys);
  ZTSObservationPause pause(*this);
  for (PropertyKey key : keys.keys()) pause.end(key);
  ZTSStyle::lockedStyleRemoveValuesForProperties(keys, flags);
  pause.leaveEnded();
}

void ZTSAggregateStyle::unconditionalRemoveValueForProperty(PropertyKey key) {
  ZTSObservationPause pause(*this);
  if (asStyle(p_overrideValueForProperty(key)) != nullptr) pause.end(key);
  ZTSStyle::unconditionalRemoveValueForProperty(key);
  pause.leaveEnded();
}

// ---- The stylesheet

void ZTSAggregateStyle::setStylesheet(ZTSStylesheet* stylesheet) {
  ZTSObservationPause pause(*this);
  pause.endAll();
  departed(stylesheet == nullptr ? this->stylesheet() : nullptr);
  ZTSStyle::setStylesheet(stylesheet);
  pause.beginAgain();
}

void ZTSAggregateStyle::departed(ZTSStylesheet* before) noexcept {
  // Styles that were removed and refer to one another in a cycle have no other owner left that could free them.
  if (mDepartedFrom != nullptr) mDepartedFrom->mDeparted.removeObject(this);
  mDepartedFrom = before;
  if (before != nullptr) before->mDeparted.addObject(this);
}

void ZTSAggregateStyle::archivingSetStylesheet(ZTSStylesheet* stylesheet) {
  ZTSObservationPause pause(*this);
  pause.endAll();
  ZTSStyle::archivingSetStylesheet(stylesheet);
  pause.beginAgain();
}

ZTSAggregateStyle::~ZTSAggregateStyle() {
  departed(nullptr);
  // Observation ends when the style leaves its stylesheet, which is before it can die. Where a class kept that
  // from happening, its references must at least not be left with an observer that is gone.
  const Ref<const PropertyMap> own = ZTSStyle::overridePropertyMap();
  if (!own) return;
  for (const PropertyMap::Entry& entry : *own) {
    ZTSStyle* referenced = asStyle(entry.value.get());
    if (referenced == nullptr || referenced == this) continue;
    while (referenced->observers().containsObject(this)) referenced->ZTSStyle::removeObserver(this);
  }
}

void ZTSAggregateStyle::cleanup() {
  for (PropertyKey key : referencedStyleProperties()) {
    if (ZTSObservationPause::covers(*this, key)) continue;  // has ended; without a stylesheet it does not begin again
    try {
      p_endObservingReferencedStyleForProperty(key);
    } catch (...) {
      ZTULog_Fn(kZTULogFailure, kSourceFile, "Style <%p> could not let go of what its property %@ refers to.",
                address(this), key);
    }
  }
  ZTSStyle::cleanup();
}

}  // namespace zt
