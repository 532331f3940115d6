// SPDX-License-Identifier: MIT

// The indexes over children and over anonymous styles.
//
// A member's own code runs while it is tested: a class may override what its map is, a value what it equals. It may
// change, remove and release anything, so a search holds the index and the member under test, keeps no place inside
// them across a test, and asks after each whether the index still stands; if not, it walks.

#include <ztstyles/reuse/ZTSMemberIndex.h>

namespace zt {

namespace {

constexpr std::size_t kWalked = 16;

}  // namespace

ZTSVariationIndexes::ZTSVariationIndexes() = default;

ZTSVariationIndexes::~ZTSVariationIndexes() {
  for (const auto& [base, index] : mChildIndexes) {
    index->markStale();
    const_cast<ZTSStyle*>(base)->p_setMark(ZTSStyleMark::hasVariationIndex, false, {});
  }
}

ZTSVariationIndexes& ZTSVariationIndexes::of(ZTSStylesheet& stylesheet) {
  if (!stylesheet.mVariations) stylesheet.mVariations = std::make_unique<ZTSVariationIndexes>();
  return *stylesheet.mVariations;
}

std::shared_ptr<ZTSVariationIndexes::Index> ZTSVariationIndexes::indexOver(const Members& members) {
  std::shared_ptr<Index> index;
  if (members.base == nullptr) {
    if (!mAnonymousIndex) mAnonymousIndex = std::make_shared<Index>(members);
    index = mAnonymousIndex;
  } else if (const auto found = mChildIndexes.find(members.base); found != mChildIndexes.end()) {
    index = found->second;
  } else {
    index = std::make_shared<Index>(members);
    mChildIndexes.emplace(members.base, index);
    const_cast<ZTSStyle*>(members.base)->p_setMark(ZTSStyleMark::hasVariationIndex, true, {});
  }
  index->refresh();
  return index;
}

Ref<ZTSStyle> ZTSVariationIndexes::first(const Members& members, ZTSStylesheet* owner, const ZTSStylesheet& stylesheet,
                                         const ZTSVariationQuery& query) {
  const std::optional<std::size_t> map =
      owner != nullptr && members.count() > kWalked ? Values::hash(query.map) : std::optional<std::size_t>();
  if (map) {
    const Index::Hashes hashes = Index::hashesOf(members, *map, stylesheet, query);
    const std::shared_ptr<Index> index = of(*owner).indexOver(members);
    Index::Slot from = 0;
    while (!index->isStale()) {
      const Index::Slot slot = index->next(hashes, from);
      if (slot == Index::kNoSlot) return {};
      if (Ref<ZTSStyle> member = retainIfAlive(members.at(slot)); member && members.fits(*member, stylesheet, query)) {
        return member;
      }
      if (!index->isStale()) index->dismiss(hashes, slot);
      from = slot + 1;
    }
  }
  for (Index::Slot slot = 0; slot < members.slotCount(); ++slot) {
    if (Ref<ZTSStyle> member = retainIfAlive(members.at(slot)); member && members.fits(*member, stylesheet, query)) {
      return member;
    }
  }
  return {};
}

Ref<ZTSStyle> ZTSVariationIndexes::firstChildOf(ZTSStyle& base, const ZTSStylesheet& stylesheet,
                                                const ZTSVariationQuery& query) {
  const Ref<ZTSStyle> heldBase(&base);
  return first({&base, nullptr}, base.stylesheet(), stylesheet, query);
}

Ref<ZTSStyle> ZTSVariationIndexes::firstAnonymousStyleOf(ZTSStylesheet& stylesheet, const ZTSVariationQuery& query) {
  const Ref<ZTSStylesheet> heldStylesheet(&stylesheet);
  return first({nullptr, &stylesheet}, &stylesheet, stylesheet, query);
}

bool ZTSVariationIndexes::overridesMatch(const ZTSStyle& style, const PropertyMap* map) {
  if (style.isPlain(ZTSStyleClass::plainMatching)) {
    if (map == nullptr) return !style.overridesAnyProperty();
    const Ref<const PropertyMap> own(style.p_ownEntries());  // a value's own code may replace it
    return own && (own == map || own->isEqual(*map));
  }
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (map == nullptr) return !own;
  return own && (own == map || own->isEqual(*map));
}

// ---- Following the styles

void ZTSStyle::matchingChanged() {
  if (p_hasMark(ZTSStyleMark::isIndexedValue)) ZTSVariationIndexes::valueChanged(*this);
  if (mStylesheet != nullptr) ZTSVariationIndexes::memberChanged(*this);
}

void ZTSVariationIndexes::memberChanged(ZTSStyle& member) {
  if (ZTSStyle* base = member.parent(); base != nullptr && base->p_hasMark(ZTSStyleMark::hasVariationIndex)) {
    childWasAdded(*base, member);
  }
  if (member.stylesheet()->mVariations) member.stylesheet()->mVariations->anonymousStyleChanged(member);
}

void ZTSVariationIndexes::childWasAdded(ZTSStyle& parent, ZTSStyle& child) {
  const auto& all = parent.stylesheet()->mVariations->mChildIndexes;
  if (const auto found = all.find(&parent); found != all.end()) found->second->enter(child);
}

void ZTSVariationIndexes::anonymousStyleChanged(ZTSStyle& style) {
  if (mAnonymousIndex) mAnonymousIndex->enter(style);
}

void ZTSVariationIndexes::anonymousStylesAreOpen() noexcept {
  if (mAnonymousIndex) mAnonymousIndex->markStale();
}

void ZTSVariationIndexes::dropIndexOf(ZTSStyle& base) noexcept {
  base.p_setMark(ZTSStyleMark::hasVariationIndex, false, {});
  auto& all = base.stylesheet()->mVariations->mChildIndexes;
  const auto found = all.find(&base);
  if (found == all.end()) return;
  found->second->markStale();  // for a search that is under way
  all.erase(found);
}

void ZTSVariationIndexes::valueChanged(ZTSStyle& value) {
  Values& values = Values::all();
  const std::lock_guard lock(values.mutex);
  const auto found = values.indexes.find(&value);
  if (found == values.indexes.end()) return;
  for (Index* index : found->second) index->valueChanged(value);
}

void ZTSVariationIndexes::valueDies(ZTSStyle& value) noexcept {
  value.p_setMark(ZTSStyleMark::isIndexedValue, false, {});
  Values& values = Values::all();
  const std::lock_guard lock(values.mutex);
  const auto found = values.indexes.find(&value);
  if (found == values.indexes.end()) return;
  for (Index* index : found->second) index->valueDies(value);
  values.indexes.erase(found);
}

bool ZTSVariationIndexes::check(const ZTSStylesheet& stylesheet) const {
  for (const auto& [base, index] : mChildIndexes) {
    if (base->stylesheet() != &stylesheet || !base->p_hasMark(ZTSStyleMark::hasVariationIndex) || !index->check())
      return false;
  }
  return !mAnonymousIndex || mAnonymousIndex->check();
}

// ---- The scratch map

ZTSVariationIndexes::Scratch::Scratch(ZTSStylesheet& stylesheet)
    : mStylesheet(&stylesheet), mMap(std::move(of(stylesheet).mScratch)) {
  if (!mMap) mMap = PropertyMap::make(8);
}

ZTSVariationIndexes::Scratch::~Scratch() {
  // A class may have kept the map that it was shown. Else its values are not kept beyond the request.
  if (mMap->referenceCount() != 1) return;
  mMap->removeAll();
  if (mStylesheet->mVariations) mStylesheet->mVariations->mScratch = std::move(mMap);
}

}  // namespace zt
