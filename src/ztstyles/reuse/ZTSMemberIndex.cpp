// SPDX-License-Identifier: MIT

// One index: what is entered where, and when it is entered again.
//
// A member that changes is entered anew and its earlier entry stays, since it cannot be found by what the member was.
// So an index has more entries than it needs, never too few, and is out of date in one of four ways, told apart by what
// has to be done. A superseded entry proposes a member that does not fit any more: a search that meets it dismisses it.
// When entries outnumber members more than three times, most are superseded and the index is built anew, which is paid
// for by the changes that made them. A style among the values of members has changed: those members stand under an old
// hash; they are written down when they are entered, and are entered again before the next search. And where the
// members have moved to other slots, or entering failed for want of memory, members are lacking: the index is stale, is
// not asked, and is built anew by the next search.

#include <platform/ZTHash.h>
#include <ztstyles/reuse/ZTSMemberIndex.h>

namespace zt {

namespace {

std::size_t hashOfStyleValue(const ZTSStyle& style, const PropertyMap* entries) {
  std::size_t hash = combineHashes(style.classObject().name().hash(), style.isLocked() ? 1 : 0);
  hash = combineHashes(hash, style.identifier().hash());
  hash = combineHashes(hash, style.parentIdentifier().hash());
  return entries != nullptr && !entries->isEmpty() ? combineHashes(hash, entries->hash()) : hash;
}

std::uint32_t folded(std::size_t hash) noexcept { return static_cast<std::uint32_t>(hash ^ hash >> 32); }

std::uint32_t childHash(std::size_t map, const ZTSStylesheet* stylesheet, bool isLocked, bool isAnonymous) noexcept {
  const std::size_t rest = reinterpret_cast<std::uintptr_t>(stylesheet) + (isLocked ? 2 : 0) + (isAnonymous ? 1 : 0);
  return folded(combineHashes(map, rest));
}

std::uint32_t anonymousHash(std::size_t map, const ZTSStyleClass* styleClass, const StringRef& parentIdentifier,
                            bool isLocked) noexcept {
  const std::size_t rest = combineHashes(reinterpret_cast<std::uintptr_t>(styleClass), parentIdentifier.hash());
  return folded(combineHashes(map, rest + (isLocked ? 1 : 0)));
}

}  // namespace

ZTSVariationIndexes::Values& ZTSVariationIndexes::Values::all() {
  static auto* values = new Values;
  return *values;
}

std::optional<std::size_t> ZTSVariationIndexes::Values::hash(const PropertyMap* map) {
  if (map == nullptr) return 0;
  std::size_t all = map->count();
  for (const PropertyMap::Entry& entry : *map) {
    std::size_t value = 0;
    if (entry.value->isPlainValue()) {
      value = entry.value->stableHash();
    } else if (const ZTSStyle* style = asStyle(entry.value.get()); style == nullptr) {
      value = entry.value->stableHash();
    } else if (style->isPlain(ZTSStyleClass::plainComparing)) {
      value = hashOfStyleValue(*style, style->p_ownEntries());
    } else {
      return std::nullopt;
    }
    // Mixed before they are added up: dense values in several properties at once must not cancel.
    all += mixBits(value + (entry.key.ordinal() + 1) * 0x9e3779b97f4a7c15ull);
  }
  return all;
}

ZTSVariationIndexes::Index::Hashes ZTSVariationIndexes::Index::hashesOf(const Members& members, std::size_t map,
                                                                        const ZTSStylesheet& holder,
                                                                        const ZTSVariationQuery& query) {
  if (members.base == nullptr)
    return {{anonymousHash(map, query.styleClass, *query.parentIdentifier, query.isLocked), 0}, 1};
  return {{childHash(map, &holder, query.isLocked, true), childHash(map, &holder, query.isLocked, false)},
          query.includesIdentified ? std::size_t{2} : std::size_t{1}};
}

void ZTSVariationIndexes::Index::enter(const ZTSStyle& member) noexcept {
  try {
    if (isStale()) return markStale();
    const Slot slot = mMembers.slotOf(member);
    if (slot != kNoSlot) enterAt(slot, member);
  } catch (...) {
    markStale();
  }
}

void ZTSVariationIndexes::Index::valueChanged(const ZTSStyle& value) noexcept {
  try {
    mChangedValues.insert(&value);
  } catch (...) {
    markStale();
  }
}

void ZTSVariationIndexes::Index::valueDies(const ZTSStyle& value) noexcept {
  mHolders.erase(&value);
  mChangedValues.erase(&value);
}

void ZTSVariationIndexes::Index::dismiss(const Hashes& hashes, Slot slot) {
  const ZTSStyle* member = mMembers.at(slot);
  const Place place = member != nullptr ? placeOf(*member) : Place{Place::nowhere, 0};
  for (std::size_t each = 0; each < hashes.count; ++each) {
    if (place.kind != Place::hashed || place.hash != hashes.hash[each]) mHashed.remove(hashes.hash[each], slot);
  }
  if (place.kind != Place::always) mAlways.erase(slot);
}

bool ZTSVariationIndexes::Index::check() const {
  if (isStale()) return true;
  for (Slot slot = 0; slot < mMembers.slotCount(); ++slot) {
    const ZTSStyle* member = mMembers.at(slot);
    if (member == nullptr || holdsChangedValue(*member)) continue;
    const Place place = placeOf(*member);
    if (place.kind == Place::always && mAlways.count(slot) == 0) return false;
    if (place.kind == Place::hashed && mHashed.next(place.hash, slot) != slot) return false;
  }
  return true;
}

ZTSVariationIndexes::Index::Place ZTSVariationIndexes::Index::placeOf(const ZTSStyle& member) const {
  const bool isChild = mMembers.base != nullptr;
  if (isChild && member.stylesheet() == nullptr) return {Place::nowhere, 0};
  if (!isChild && member.stylesheet() != mMembers.stylesheet)
    return {Place::always, 0};  // its changes are not told here
  if (!member.isPlain(ZTSStyleClass::plainMatching)) return {Place::always, 0};
  const std::optional<std::size_t> map = Values::hash(member.p_ownEntries());
  if (!map) return {Place::always, 0};
  return {Place::hashed,
          isChild ? childHash(*map, member.stylesheet(), member.isLocked(), member.isAnonymous())
                  : anonymousHash(*map, &member.classObject(), member.parentIdentifier(), member.isLocked())};
}

void ZTSVariationIndexes::Index::enterAt(Slot slot, const ZTSStyle& member) {
  const Place place = placeOf(member);
  if (place.kind == Place::nowhere) return;
  ++mEntries;
  if (place.kind == Place::always) {
    mAlways.insert(slot);
    return;
  }
  mHashed.add(place.hash, slot);
  if (member.p_ownEntries() == nullptr) return;
  for (const PropertyMap::Entry& entry : *member.p_ownEntries()) {
    if (ZTSStyle* value = asStyle(entry.value.get())) followValue(*value, slot);
  }
}

void ZTSVariationIndexes::Index::followValue(ZTSStyle& value, Slot slot) {
  const auto [holders, isNew] = mHolders.try_emplace(&value);
  if (isNew) {
    Values& values = Values::all();
    const std::lock_guard lock(values.mutex);
    values.indexes[&value].push_back(this);
    value.p_setMark(ZTSStyleMark::isIndexedValue, true, {});
  }
  std::vector<Slot>& slots = holders->second;
  if (slots.empty() || slots.back() != slot) slots.push_back(slot);
}

void ZTSVariationIndexes::Index::enterHoldersOfChangedValues() {
  markStale();  // should memory run out on the way
  const auto changed = std::exchange(mChangedValues, {});
  std::vector<Slot> slots;
  for (const ZTSStyle* value : changed) {
    if (const auto holders = mHolders.find(value); holders != mHolders.end()) {
      slots.insert(slots.end(), holders->second.begin(), holders->second.end());
      holders->second.clear();
    }
  }
  for (const Slot slot : slots) {
    if (const ZTSStyle* member = mMembers.at(slot)) enterAt(slot, *member);
  }
  mIsStale = false;
}

bool ZTSVariationIndexes::Index::holdsChangedValue(const ZTSStyle& member) const {
  if (mChangedValues.empty() || member.p_ownEntries() == nullptr) return false;
  for (const PropertyMap::Entry& entry : *member.p_ownEntries()) {
    if (const ZTSStyle* value = asStyle(entry.value.get()); value != nullptr && mChangedValues.contains(value))
      return true;
  }
  return false;
}

void ZTSVariationIndexes::Index::forgetValues() noexcept {
  if (mHolders.empty()) return;
  Values& values = Values::all();
  const std::lock_guard lock(values.mutex);
  for (const auto& holder : mHolders) {
    const auto found = values.indexes.find(holder.first);
    if (found == values.indexes.end()) continue;
    found->second.erase(std::remove(found->second.begin(), found->second.end(), this), found->second.end());
    if (!found->second.empty()) continue;
    const_cast<ZTSStyle*>(holder.first)->p_setMark(ZTSStyleMark::isIndexedValue, false, {});
    values.indexes.erase(found);
  }
  mHolders.clear();
  mChangedValues.clear();
}

void ZTSVariationIndexes::Index::build() {
  markStale();
  forgetValues();
  mHashed.clear();
  mAlways.clear();
  mEntries = 0;
  mHashed.reserve(mMembers.count());
  for (Slot slot = 0; slot < mMembers.slotCount(); ++slot) {
    if (const ZTSStyle* member = mMembers.at(slot)) enterAt(slot, *member);
  }
  mGeneration = mMembers.generation();
  mIsStale = false;
}

}  // namespace zt
