// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSSlotIndex.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <algorithm>
#include <mutex>
#include <optional>

namespace zt {

/// The set that is searched: the children of a base, or the anonymous styles of a stylesheet.
struct ZTSVariationIndexes::Members {
  using Slot = ZTSSlotIndex::Slot;

  const ZTSStyle* base = nullptr;
  const ZTSStylesheet* stylesheet = nullptr;  // where there is no base

  template <class Question>
  auto ask(Question question) const {
    return base != nullptr ? question(base->children().table()) : question(stylesheet->mAnonymousStyles.table());
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

  /// The full rule.
  [[nodiscard]] bool fits(const ZTSStyle& member, const ZTSStylesheet& holder, const ZTSVariationQuery& query) const {
    if (member.isLocked() != query.isLocked) return false;
    if (base != nullptr) {
      if (member.stylesheet() != &holder || (member.isIdentified() && !query.includesIdentified)) return false;
    } else if (&member.classObject() != query.styleClass ||
               !equalTexts(member.parentIdentifier(), *query.parentIdentifier)) {
      return false;
    }
    return overridesMatch(member, query.map);
  }
};

/// Which indexes have members with a style as a value. For the whole process, since that style need not belong to the
/// same stylesheet; each style's entry is used by the style's own thread alone.
struct ZTSVariationIndexes::Values {
  std::mutex mutex;
  boost::unordered_flat_map<const ZTSStyle*, boost::container::small_vector<Index*, 1>> indexes;

  static Values& all();
  /// A hash that agrees with the equality of maps; none where no hash can, see `ZTSVariationIndexes`.
  static std::optional<std::size_t> hash(const PropertyMap* map);
};

/// One index over one set. See `ZTSVariationIndexes` for what it always holds.
class ZTSVariationIndexes::Index {
 public:
  using Slot = ZTSSlotIndex::Slot;
  static constexpr Slot kNoSlot = ZTSSlotIndex::kNoSlot;

  explicit Index(const Members& members) : mMembers(members) {}
  ~Index() { forgetValues(); }
  Index(const Index&) = delete;
  Index& operator=(const Index&) = delete;

  /// Whether the index may lack members, so that it must not be asked before the next `refresh`.
  [[nodiscard]] bool isStale() const { return mIsStale || mGeneration != mMembers.generation(); }
  void markStale() noexcept { mIsStale = true; }

  /// Makes the index right; see ZTSMemberIndex.cpp.
  void refresh() {
    if (isStale() || isMostlySuperseded()) return build();
    if (!mChangedValues.empty()) enterHoldersOfChangedValues();
  }

  /// The member was added, or what is compared of it has changed. Never throws: at worst the index is stale.
  void enter(const ZTSStyle& member) noexcept;
  void valueChanged(const ZTSStyle& value) noexcept;
  void valueDies(const ZTSStyle& value) noexcept;

  /// The hashes under which what fits must be entered.
  struct Hashes {
    std::uint32_t hash[2];
    std::size_t count;
  };
  static Hashes hashesOf(const Members& members, std::size_t map, const ZTSStylesheet& holder,
                         const ZTSVariationQuery& query);

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
  void dismiss(const Hashes& hashes, Slot slot);

  [[nodiscard]] bool check() const;

 private:
  /// Where a member must be entered now.
  struct Place {
    enum Kind : std::uint8_t { nowhere, hashed, always } kind;
    std::uint32_t hash;
  };
  [[nodiscard]] Place placeOf(const ZTSStyle& member) const;

  [[nodiscard]] bool isMostlySuperseded() const { return mEntries > 3 * mMembers.count() + 64; }
  void build();
  void enterAt(Slot slot, const ZTSStyle& member);
  void followValue(ZTSStyle& value, Slot slot);
  void enterHoldersOfChangedValues();
  [[nodiscard]] bool holdsChangedValue(const ZTSStyle& member) const;
  void forgetValues() noexcept;

  const Members mMembers;
  bool mIsStale = true;
  std::uint32_t mGeneration = 0;
  std::size_t mEntries = 0;  // how often something was entered since the index was built
  ZTSSlotIndex mHashed;
  std::set<Slot> mAlways;
  boost::unordered_flat_map<const ZTSStyle*, std::vector<Slot>> mHolders;  // of the styles among the values
  boost::unordered_flat_set<const ZTSStyle*> mChangedValues;  // those whose holders are to be entered again
};

}  // namespace zt
