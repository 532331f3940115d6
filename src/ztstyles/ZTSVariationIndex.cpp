// The indexes over children and over anonymous styles.
//
// A member's own code runs while it is tested: a class may override what its map is, a value what it equals. It may
// change, remove and release anything, so a search holds the index and the member under test, keeps no place inside
// them across a test, and asks after each whether the index still stands; if not, it walks.

#include <platform/ZTHash.h>
#include <ztstyles/ZTSSlotIndex.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTSVariationIndex.h>

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <algorithm>
#include <mutex>
#include <optional>

namespace zt {

namespace {

constexpr std::size_t kWalked = 16;

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

// The set that is searched: the children of a base, or the anonymous styles of a stylesheet.
struct ZTSVariationIndexes::Members {
  using Slot = ZTSSlotIndex::Slot;

  const ZTSStyle* base = nullptr;
  const ZTSStylesheet* stylesheet = nullptr;  // where there is no base

  template <class Question>
  auto ask(Question question) const {
    return base != nullptr ? question(base->mChildren.table()) : question(stylesheet->mAnonymousStyles.table());
  }
  [[nodiscard]] std::size_t count() const {
    return ask([](const auto& table) { return table.count(); });
  }
  [[nodiscard]] Slot slotCount() const {
    return ask([](const auto& table) { return table.slotCount(); });
  }
  [[nodiscard]] std::uint32_t generation() const {
    return ask([](const auto& table) { return table.generation(); });
  }
  [[nodiscard]] Slot slotOf(const ZTSStyle& member) const {
    return ask([&](const auto& table) { return table.slotOf(&member); });
  }
  [[nodiscard]] ZTSStyle* at(Slot slot) const {
    return ask([slot](const auto& table) -> ZTSStyle* {
      const auto* entry = table.atSlot(slot);
      return entry != nullptr ? &**entry : nullptr;
    });
  }

  [[nodiscard]] bool fits(const ZTSStyle& member, const ZTSStylesheet& holder, const ZTSVariationQuery& query) const {
    if (member.isLocked() != query.isLocked) return false;
    if (base != nullptr) {
      if (member.stylesheet() != &holder || (member.isIdentified() && !query.includesIdentified)) return false;
    } else if (&member.classObject() != query.styleClass || !equalTexts(member.parentIdentifier(), *query.parentIdentifier)) {
      return false;
    }
    return overridesMatch(member, query.map);
  }
};

// ---- One index

// Which indexes have members with a style as a value. For the whole process, since that style need not belong to the
// same stylesheet; each style's entry is used by the style's own thread alone.
struct ZTSVariationIndexes::Values {
  std::mutex mutex;
  boost::unordered_flat_map<const ZTSStyle*, boost::container::small_vector<Index*, 1>> indexes;

  static Values& all() {
    static auto* values = new Values;
    return *values;
  }

  /// A hash that agrees with the equality of maps; none where no hash can, see the header.
  static std::optional<std::size_t> hash(const PropertyMap* map) {
    if (map == nullptr) return 0;
    std::size_t all = map->count();
    for (const PropertyMap::Entry& entry : *map) {
      std::size_t value = 0;
      if (entry.value->isPlainValue()) {
        value = entry.value->stableHash();
      } else if (const ZTSStyle* style = asStyle(entry.value.get()); style == nullptr) {
        value = entry.value->stableHash();
      } else if (style->isPlain(ZTSStyleClass::plainComparing)) {
        value = hashOfStyleValue(*style, style->mLocalPropertyMap.get());
      } else {
        return std::nullopt;
      }
      // Mixed before they are added up: dense values in several properties at once must not cancel.
      all += mixBits(value + (entry.key.ordinal() + 1) * 0x9e3779b97f4a7c15ull);
    }
    return all;
  }
};

class ZTSVariationIndexes::Index {
 public:
  using Slot = ZTSSlotIndex::Slot;
  static constexpr Slot kNoSlot = ZTSSlotIndex::kNoSlot;

  explicit Index(const Members& members) : mMembers(members) {}
  ~Index() { forgetValues(); }
  Index(const Index&) = delete;
  Index& operator=(const Index&) = delete;

  [[nodiscard]] bool isStale() const { return mIsStale || mGeneration != mMembers.generation(); }
  void markStale() noexcept { mIsStale = true; }

  /// Makes the index right: builds it where it is stale, enters again what holds a changed style.
  void refresh() {
    if (isStale() || mEntries > 3 * mMembers.count() + 64) return build();
    if (!mChangedValues.empty()) enterHoldersOfChangedValues();
  }

  /// The member was added, or what is compared of it has changed. Never throws: at worst the index is stale.
  void enter(const ZTSStyle& member) noexcept {
    try {
      if (isStale()) return markStale();
      const Slot slot = mMembers.slotOf(member);
      if (slot != kNoSlot) enterAt(slot, member);
    } catch (...) {
      markStale();
    }
  }

  void valueChanged(const ZTSStyle& value) noexcept {
    try {
      mChangedValues.insert(&value);
    } catch (...) {
      markStale();
    }
  }
  void valueDies(const ZTSStyle& value) noexcept {
    mHolders.erase(&value);
    mChangedValues.erase(&value);
  }

  /// The hashes under which what fits must be entered.
  struct Hashes {
    std::uint32_t hash[2];
    std::size_t count;
  };

  /// The next slot to test.
  [[nodiscard]] Slot next(const Hashes& hashes, Slot from) const {
    Slot slot = mHashed.next(hashes.hash[0], from);
    if (hashes.count == 2) slot = std::min(slot, mHashed.next(hashes.hash[1], from));
    if (!mAlways.empty()) {
      if (const auto always = mAlways.lower_bound(from); always != mAlways.end()) slot = std::min(slot, *always);
    }
    return slot;
  }

  /// What was proposed did not fit: entries of an earlier state of the member go, so that none is tested twice.
  void dismiss(const Hashes& hashes, Slot slot) {
    const ZTSStyle* member = mMembers.at(slot);
    const Place place = member != nullptr ? placeOf(*member) : Place{Place::nowhere, 0};
    for (std::size_t each = 0; each < hashes.count; ++each) {
      if (place.kind != Place::hashed || place.hash != hashes.hash[each]) mHashed.remove(hashes.hash[each], slot);
    }
    if (place.kind != Place::always) mAlways.erase(slot);
  }

  [[nodiscard]] bool check() const {
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

 private:
  struct Place {
    enum Kind : std::uint8_t { nowhere, hashed, always } kind;
    std::uint32_t hash;
  };

  [[nodiscard]] Place placeOf(const ZTSStyle& member) const {
    const bool isChild = mMembers.base != nullptr;
    if (isChild && member.mStylesheet == nullptr) return {Place::nowhere, 0};
    if (!isChild && member.mStylesheet != mMembers.stylesheet) return {Place::always, 0};  // its changes are not told here
    if (!member.isPlain(ZTSStyleClass::plainMatching)) return {Place::always, 0};
    const std::optional<std::size_t> map = Values::hash(member.mLocalPropertyMap.get());
    if (!map) return {Place::always, 0};
    return {Place::hashed, isChild ? childHash(*map, member.mStylesheet, member.isLocked(), member.isAnonymous())
                                   : anonymousHash(*map, &member.classObject(), member.mParentIdentifier, member.isLocked())};
  }

  void enterAt(Slot slot, const ZTSStyle& member) {
    const Place place = placeOf(member);
    if (place.kind == Place::nowhere) return;
    ++mEntries;
    if (place.kind == Place::always) {
      mAlways.insert(slot);
      return;
    }
    mHashed.add(place.hash, slot);
    if (!member.mLocalPropertyMap) return;
    for (const PropertyMap::Entry& entry : *member.mLocalPropertyMap) {
      if (ZTSStyle* value = asStyle(entry.value.get())) followValue(*value, slot);
    }
  }

  void followValue(ZTSStyle& value, Slot slot) {
    const auto [holders, isNew] = mHolders.try_emplace(&value);
    if (isNew) {
      Values& values = Values::all();
      const std::lock_guard lock(values.mutex);
      values.indexes[&value].push_back(this);
      value.setState(ZTSStyle::kIsIndexedValue, true);
    }
    std::vector<Slot>& slots = holders->second;
    if (slots.empty() || slots.back() != slot) slots.push_back(slot);
  }

  void enterHoldersOfChangedValues() {
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

  [[nodiscard]] bool holdsChangedValue(const ZTSStyle& member) const {
    if (mChangedValues.empty() || !member.mLocalPropertyMap) return false;
    for (const PropertyMap::Entry& entry : *member.mLocalPropertyMap) {
      if (const ZTSStyle* value = asStyle(entry.value.get()); value != nullptr && mChangedValues.contains(value)) return true;
    }
    return false;
  }

  void forgetValues() noexcept {
    if (mHolders.empty()) return;
    Values& values = Values::all();
    const std::lock_guard lock(values.mutex);
    for (const auto& holder : mHolders) {
      const auto found = values.indexes.find(holder.first);
      if (found == values.indexes.end()) continue;
      found->second.erase(std::remove(found->second.begin(), found->second.end(), this), found->second.end());
      if (!found->second.empty()) continue;
      const_cast<ZTSStyle*>(holder.first)->setState(ZTSStyle::kIsIndexedValue, false);
      values.indexes.erase(found);
    }
    mHolders.clear();
    mChangedValues.clear();
  }

  void build() {
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

  const Members mMembers;
  bool mIsStale = true;
  std::uint32_t mGeneration = 0;
  std::size_t mEntries = 0;  // how often something was entered since the index was built
  ZTSSlotIndex mHashed;
  std::set<Slot> mAlways;
  boost::unordered_flat_map<const ZTSStyle*, std::vector<Slot>> mHolders;  // of the styles among the values
  boost::unordered_flat_set<const ZTSStyle*> mChangedValues;               // those whose holders are to be entered again
};

// ---- All indexes of a stylesheet

ZTSVariationIndexes::ZTSVariationIndexes() = default;

ZTSVariationIndexes::~ZTSVariationIndexes() {
  for (const auto& [base, index] : mChildIndexes) {
    index->markStale();
    const_cast<ZTSStyle*>(base)->setState(ZTSStyle::kHasVariationIndex, false);
  }
}

ZTSVariationIndexes& ZTSVariationIndexes::of(ZTSStylesheet& stylesheet) {
  if (!stylesheet.mVariations) stylesheet.mVariations = std::make_unique<ZTSVariationIndexes>();
  return *stylesheet.mVariations;
}

std::shared_ptr<ZTSVariationIndexes::Index> ZTSVariationIndexes::indexOver(const Members& members) {
  std::shared_ptr<Index>& index = members.base != nullptr ? mChildIndexes[members.base] : mAnonymousIndex;
  if (!index) {
    index = std::make_shared<Index>(members);
    if (members.base != nullptr) const_cast<ZTSStyle*>(members.base)->setState(ZTSStyle::kHasVariationIndex, true);
  }
  index->refresh();
  return index;
}

Ref<ZTSStyle> ZTSVariationIndexes::first(const Members& members, ZTSStylesheet* owner, const ZTSStylesheet& stylesheet,
                                         const ZTSVariationQuery& query) {
  const std::optional<std::size_t> map =
      owner != nullptr && members.count() > kWalked ? Values::hash(query.map) : std::optional<std::size_t>();
  if (map) {
    Index::Hashes hashes{};
    if (members.base != nullptr) {
      hashes = {{childHash(*map, &stylesheet, query.isLocked, true), childHash(*map, &stylesheet, query.isLocked, false)},
                query.includesIdentified ? std::size_t{2} : std::size_t{1}};
    } else {
      hashes = {{anonymousHash(*map, query.styleClass, *query.parentIdentifier, query.isLocked), 0}, 1};
    }
    const std::shared_ptr<Index> index = of(*owner).indexOver(members);
    Index::Slot from = 0;
    while (!index->isStale()) {
      const Index::Slot slot = index->next(hashes, from);
      if (slot == Index::kNoSlot) return {};
      if (const Ref<ZTSStyle> member = retainIfAlive(members.at(slot)); member && members.fits(*member, stylesheet, query)) {
        return member;
      }
      if (!index->isStale()) index->dismiss(hashes, slot);
      from = slot + 1;
    }
  }
  for (Index::Slot slot = 0; slot < members.slotCount(); ++slot) {
    if (const Ref<ZTSStyle> member = retainIfAlive(members.at(slot)); member && members.fits(*member, stylesheet, query)) {
      return member;
    }
  }
  return {};
}

Ref<ZTSStyle> ZTSVariationIndexes::firstChildOf(ZTSStyle& base, const ZTSStylesheet& stylesheet, const ZTSVariationQuery& query) {
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
    const Ref<const PropertyMap> own = style.mLocalPropertyMap;  // a value's own code may replace it
    return own && (own == map || own->isEqual(*map));
  }
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (map == nullptr) return !own;
  return own && (own == map || own->isEqual(*map));
}

// ---- Following the styles

void ZTSStyle::matchingChanged() {
  if (hasState(kIsIndexedValue)) ZTSVariationIndexes::valueChanged(*this);
  if (mStylesheet != nullptr) ZTSVariationIndexes::memberChanged(*this);
}

void ZTSVariationIndexes::memberChanged(ZTSStyle& member) {
  if (ZTSStyle* base = member.parent(); base != nullptr && base->hasState(ZTSStyle::kHasVariationIndex)) {
    childWasAdded(*base, member);
  }
  if (member.mStylesheet->mVariations) member.mStylesheet->mVariations->anonymousStyleChanged(member);
}

void ZTSVariationIndexes::childWasAdded(ZTSStyle& parent, ZTSStyle& child) {
  const auto& all = parent.mStylesheet->mVariations->mChildIndexes;
  if (const auto found = all.find(&parent); found != all.end()) found->second->enter(child);
}

void ZTSVariationIndexes::anonymousStyleChanged(ZTSStyle& style) {
  if (mAnonymousIndex) mAnonymousIndex->enter(style);
}

void ZTSVariationIndexes::dropIndexOf(ZTSStyle& base) noexcept {
  base.setState(ZTSStyle::kHasVariationIndex, false);
  auto& all = base.mStylesheet->mVariations->mChildIndexes;
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
  value.setState(ZTSStyle::kIsIndexedValue, false);
  Values& values = Values::all();
  const std::lock_guard lock(values.mutex);
  const auto found = values.indexes.find(&value);
  if (found == values.indexes.end()) return;
  for (Index* index : found->second) index->valueDies(value);
  values.indexes.erase(found);
}

bool ZTSVariationIndexes::check(const ZTSStylesheet& stylesheet) const {
  for (const auto& [base, index] : mChildIndexes) {
    if (base->stylesheet() != &stylesheet || !base->hasState(ZTSStyle::kHasVariationIndex) || !index->check()) return false;
  }
  return !mAnonymousIndex || mAnonymousIndex->check();
}

// ---- The scratch map

ZTSVariationIndexes::Scratch::Scratch(ZTSStylesheet& stylesheet)
    : mStylesheet(&stylesheet), mMap(std::move(of(stylesheet).mScratch)) {
  if (!mMap) mMap = PropertyMap::make(8);
}

ZTSVariationIndexes::Scratch::~Scratch() {
  // Values are not kept beyond the request.
  mMap->removeAll();
  if (mStylesheet->mVariations) mStylesheet->mVariations->mScratch = std::move(mMap);
}

}  // namespace zt
