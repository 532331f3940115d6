// SPDX-License-Identifier: MIT
// Which styles nothing uses, and the passes over them.
//
// A pass answers what a walk over a snapshot of all styles would, looking at each one's count when its turn comes, at
// the cost of the unused ones alone. The walk's order is a number for each style, its place: the identified styles in
// the slots of their table, then the anonymous ones in theirs. So no snapshot is made. Those that were unused when the
// pass began stand in `mFound`, sorted by place; one that becomes unused later goes into the heap `mLater`, if its
// place is still ahead; `next` takes the lower of both and goes past `mReached`, never back.
//
// The places are those of the beginning, and a slot keeps its number until the stylesheet stores something. Until then
// the place of a style is looked up where it stands, and only a style that leaves its slot has its place written down
// as it goes, for it may come back. Before the first storing all places are written down at once. What has none of the
// beginning has joined since and is not visited.

#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>

#include <algorithm>

namespace zt {

ZTSUnusedStyles::ZTSUnusedStyles(ZTSStylesheet& stylesheet) : mStylesheet(stylesheet) { listHeldStyles(); }

ZTSUnusedStyles::~ZTSUnusedStyles() = default;

void ZTSUnusedStyles::listHeldStyles() {
  bool holdsStrangers = false;
  const auto list = [&](ZTSStyle& style) {
    if (style.usageCount() == 0) mStyles.addObject(&style);
    if (style.stylesheet() != &mStylesheet) holdsStrangers = true;
  };
  for (const auto& entry : mStylesheet.mIdentifiedStyles) list(*entry.style);
  for (ZTSStyle* style : mStylesheet.mAnonymousStyles) list(*style);
  mMissesSome = holdsStrangers;
}

void ZTSUnusedStyles::useChanged(ZTSStyle& style) noexcept {
  if (style.usageCount() == 0) {
    add(style);
  } else {
    mStyles.removeObject(&style);
  }
}

void ZTSUnusedStyles::styleEntered(ZTSStyle& style) noexcept {
  if (style.usageCount() == 0) add(style);
}

void ZTSUnusedStyles::add(ZTSStyle& style) noexcept {
  try {
    mStyles.addObject(&style);
    for (Pass* pass = mPass; pass != nullptr; pass = pass->mOuter) pass->becameUnused(style);
  } catch (...) {
    mMissesSome = true;  // a pass under way does not offer it
  }
}

void ZTSUnusedStyles::willStore() {
  for (Pass* pass = mPass; pass != nullptr; pass = pass->mOuter) pass->writeDownAllPlaces();
}

void ZTSUnusedStyles::willRelease(const ZTSStyle& style) noexcept {
  for (Pass* pass = mPass; pass != nullptr; pass = pass->mOuter) {
    const Pass::Place place = pass->firstPlaceOf(style);
    if (place <= pass->mReached) continue;
    try {
      pass->mFirstPlaces.try_emplace(&style, Pass::Visit{place, retainIfAlive(const_cast<ZTSStyle*>(&style))});
    } catch (...) {
      // Without memory: the style is not offered again in this pass.
    }
  }
}

void ZTSUnusedStyles::listen(NSUndoManager* undoManager) {
  mListener.reset();
  if (undoManager == nullptr) return;
  // The registration does not keep the manager alive, and ends with it or with this object.
  mListener = std::make_unique<NotificationListener>(NSUndoManagerWillCloseUndoGroupNotification, undoManager,
                                                     [&stylesheet = mStylesheet](const NSNotification& notification) {
                                                       stylesheet.p_cleanupUnusedStylesOnUndoGroupClose(notification);
                                                     });
}

bool ZTSUnusedStyles::check(const ZTSStylesheet& stylesheet) const {
  std::size_t held = 0;
  if (mMissesSome) return true;
  for (const ZTSStyle* style : stylesheet.styles()) {
    if ((style->usageCount() == 0) != mStyles.containsObject(style)) return false;
    held += style->usageCount() == 0 ? 1 : 0;
  }
  // What else is listed is linked without being held.
  const auto isLinked = [&](const ZTSStyle* style) {
    return style->stylesheet() == &stylesheet && style->usageCount() == 0;
  };
  return mStyles.count() == held || std::all_of(mStyles.begin(), mStyles.end(), isLinked);
}

// ---- A pass

ZTSUnusedStyles::Pass::Pass(ZTSStylesheet& stylesheet) : mStylesheet(&stylesheet) {
  if (!stylesheet.mUnused) stylesheet.mUnused = std::make_unique<ZTSUnusedStyles>(stylesheet);
  ZTSUnusedStyles& unused = *stylesheet.mUnused;
  if (unused.mMissesSome) unused.listHeldStyles();
  const std::size_t all = stylesheet.mIdentifiedStyles.count() + stylesheet.mAnonymousStyles.count();
  mFound.reserve(unused.mStyles.count());
  if (unused.mMissesSome || unused.mStyles.count() >= all / 8) {
    // With so many, the walk is quicker than looking each one's place up. Of a style that is linked elsewhere nobody
    // tells that it has become unused.
    forEachHeldStyle([this](Place place, ZTSStyle* style) {
      if (style->usageCount() == 0 || style->stylesheet() != mStylesheet.get()) {
        mFound.push_back({place, Ref<ZTSStyle>(style)});
      }
    });
  } else {
    for (ZTSStyle* style : unused.mStyles) {
      if (const Place place = currentPlaceOf(*style); place != 0) mFound.push_back({place, Ref<ZTSStyle>(style)});
    }
    std::sort(mFound.begin(), mFound.end(),
              [](const Visit& left, const Visit& right) { return left.place < right.place; });
  }
  mOuter = std::exchange(unused.mPass, this);
}

ZTSUnusedStyles::Pass::~Pass() {
  mStylesheet->mUnused->mPass = mOuter;
  if (mOuter == nullptr && !mStylesheet->mStyleCleanupEnabled) mStylesheet->mUnused.reset();
}

Ref<ZTSStyle> ZTSUnusedStyles::Pass::next() {
  for (;;) {
    Visit visit{};
    const bool hasFound = mNextFound < mFound.size();
    if (!mLater.empty() && (!hasFound || mLater.front().place < mFound[mNextFound].place)) {
      std::pop_heap(mLater.begin(), mLater.end());
      visit = std::move(mLater.back());
      mLater.pop_back();
    } else if (hasFound) {
      visit = std::move(mFound[mNextFound++]);
    } else {
      return {};
    }
    // One that became used and unused again stands in both lists.
    if (visit.place <= mReached || visit.style->usageCount() != 0 || !mStylesheet->holdsStyle(*visit.style)) continue;
    mReached = visit.place;
    return std::move(visit.style);
  }
}

ZTSUnusedStyles::Pass::Place ZTSUnusedStyles::Pass::currentPlaceOf(const ZTSStyle& style) const noexcept {
  if (style.isIdentified()) {
    const auto slot = mStylesheet->mIdentifiedStyles.slotOf(style);
    return slot != ZTSStyleDictionary::Table::kNoSlot ? Place{1} + slot : 0;
  }
  const auto& table = mStylesheet->mAnonymousStyles.table();
  const auto slot = table.slotOf(&style);
  return slot != table.kNoSlot ? (Place{1} << 32) + slot : 0;
}

ZTSUnusedStyles::Pass::Place ZTSUnusedStyles::Pass::firstPlaceOf(const ZTSStyle& style) const noexcept {
  if (const auto written = mFirstPlaces.find(&style); written != mFirstPlaces.end()) return written->second.place;
  return mHasAllPlaces ? 0 : currentPlaceOf(style);
}

template <class Call>
void ZTSUnusedStyles::Pass::forEachHeldStyle(Call call) const {
  const auto& identified = mStylesheet->mIdentifiedStyles;
  for (auto entry = identified.begin(); entry != identified.end(); ++entry)
    call(Place{1} + entry.slot(), entry->style.get());
  const auto& anonymous = mStylesheet->mAnonymousStyles.table();
  for (auto entry = anonymous.begin(); entry != anonymous.end(); ++entry) {
    call((Place{1} << 32) + entry.slot(), entry->get());
  }
}

void ZTSUnusedStyles::Pass::becameUnused(ZTSStyle& style) {
  const Place place = firstPlaceOf(style);
  if (place <= mReached) return;
  mLater.push_back({place, Ref<ZTSStyle>(&style)});
  std::push_heap(mLater.begin(), mLater.end());
}

void ZTSUnusedStyles::Pass::writeDownAllPlaces() {
  if (mHasAllPlaces) return;
  forEachHeldStyle([this](Place place, ZTSStyle* style) {
    mFirstPlaces.try_emplace(style, Visit{place, Ref<ZTSStyle>(style)});
  });
  mHasAllPlaces = true;
}

}  // namespace zt
