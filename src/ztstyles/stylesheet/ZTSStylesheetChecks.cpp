// SPDX-License-Identifier: MIT

// The slow checks, for tests: whether the indexes equal what they stand for, and whether what follows from the links
// has been done. `validate` tells an application what is wrong about its styles; what is looked at here is the
// library's own, and never wrong between two operations, whatever an application has done, refused or thrown.

#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/references/ZTSDepartedStyles.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <algorithm>
#include <vector>

namespace zt {

namespace {

using Reference = ZTSAggregateStyle::Reference;

/// The records of all aggregates, of any stylesheet, that observe the style.
std::vector<Reference> recordsOf(const ZTSStyle& style) {
  std::vector<Reference> records;
  for (ZTSStyleObserver* observer : style.observers().allObjects()) {
    const auto* aggregate = dynamic_cast<ZTSAggregateStyle*>(observer);
    if (aggregate == nullptr) continue;
    for (const Reference& each : aggregate->p_references()) {
      if (each.style == &style) records.push_back(each);
    }
  }
  return records;
}

/// Whether the style counts as the library does.
bool countsPlainly(const ZTSStyle& style) { return style.isPlain(ZTSStyleClass::libraryCounting); }

/// Whether the aggregate has a record of each style among its values, observes each as often as its records say, and
/// keeps what it refers to in use while it is in use itself.
bool areReferencesRight(const ZTSAggregateStyle& aggregate) {
  if (aggregate.p_isUnfinished() || !aggregate.isPlain(ZTSStyleClass::libraryReading)) return true;
  std::size_t expected = 0;
  for (PropertyKey key : aggregate.referencedStyleProperties()) {
    const ZTSStyle* referenced = asStyle(aggregate.p_overrideValueForProperty(key));
    if (referenced == nullptr || referenced == &aggregate) continue;
    ++expected;
    const Reference* record = const_cast<ZTSAggregateStyle&>(aggregate).p_recordOf(key, *referenced);
    if (record == nullptr || !record->isObserved) return false;
    if (!countsPlainly(aggregate) || !countsPlainly(*referenced)) continue;
    if (aggregate.usageCount() != 0 ? referenced->usageCount() == 0 : record->hasUsageUnit) return false;
    if (record->hasOrphanUnit != (aggregate.orphanCount() != 0)) return false;
  }
  if (aggregate.p_references().size() != expected) return false;
  return std::all_of(aggregate.p_references().begin(), aggregate.p_references().end(), [&](const Reference& each) {
    const auto isSame = [&](const Reference& other) { return other.style == each.style; };
    return each.style->observers().countForObject(const_cast<ZTSAggregateStyle*>(&aggregate)) ==
           static_cast<std::size_t>(
               std::count_if(aggregate.p_references().begin(), aggregate.p_references().end(), isSame));
  });
}

}  // namespace

/// Whether a style that looked for its parent in vain would not find one now either, or one that is refused.
bool ZTSStylesheet::isOrphanRight(const ZTSStyle& style) const {
  if (!style.p_hasMark(ZTSStyleMark::isFiledAsOrphan)) return true;
  const ZTSStylesheet* reach = style.p_reachStylesheet();
  const ZTSStyle* found = reach != nullptr ? reach->cascadedStyleWithIdentifier(style.parentIdentifier()) : nullptr;
  if (found == nullptr) return true;
  while (found != nullptr && found != &style) found = found->parent();
  return found == &style && style.p_hasMark(ZTSStyleMark::isOnRefusedWay);
}

/// Whether the counts are at least what children and references give, and a use reaches the parent.
bool ZTSStylesheet::areCountsRight(const ZTSStyle& style) {
  if (!countsPlainly(style)) return true;
  std::size_t uses = 0;
  std::size_t orphans = 0;
  for (const ZTSStyle* child : style.children()) {
    uses += child->usageCount() != 0 && !child->p_hasMark(ZTSStyleMark::useWasRefused) ? 1 : 0;
    orphans += child->orphanCount() != 0 ? 1 : 0;
    if (child->usageCount() != 0 && style.usageCount() == 0 && countsPlainly(*child)) return false;
  }
  for (const Reference& each : recordsOf(style)) {
    uses += each.hasUsageUnit ? 1 : 0;
    orphans += each.hasOrphanUnit ? 1 : 0;
  }
  return style.usageCount() >= uses && style.orphanCount() >= orphans;
}

bool ZTSStylesheet::indexesAreRight() const {
  const ZTSStyleSet all = styles();
  if (!mOrphans->check(all)) return false;
  const bool knowsOrphans = !mOrphans->missesSome() && looksUpPlainly();
  for (ZTSStyle* style : all) {
    if ((knowsOrphans && !isOrphanRight(*style)) || !areCountsRight(*style)) return false;
    const auto* aggregate = asAggregateStyle(style);
    if (aggregate != nullptr && aggregate->stylesheet() == this && !areReferencesRight(*aggregate)) return false;
  }
  const auto isOnlyLinked = [&](const ZTSStyle* style) { return style->stylesheet() == this && !holdsStyle(*style); };
  if (!std::all_of(mLinkedOnly.begin(), mLinkedOnly.end(), isOnlyLinked)) return false;
  if (mDeparted && !mDeparted->check()) return false;
  if (mVariations && !mVariations->check(*this)) return false;
  return !mUnused || mUnused->check(*this);
}

}  // namespace zt
