// SPDX-License-Identifier: MIT

// Orders of writing. The default order is defined by insertion: the identified styles are taken from last to
// first, and each is inserted right behind its nearest ancestor that is in the list already, else in front.
// Walking the ancestors and inserting into an array would be quadratic for deep families. The list is linked,
// and the nearest ancestor is found from the end of the story: when all styles are in, they are taken out
// again in the opposite order, and a style that is out hands the question on to its parent. Such hand-overs
// only grow, so that they can be shortened on the way, and every question is as good as constant.

#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

namespace zt {

namespace {

using Index = std::uint32_t;
constexpr Index kNone = std::numeric_limits<Index>::max();

bool isAggregate(const ZTSStyle& style) { return dynamic_cast<const ZTSAggregateStyle*>(&style) != nullptr; }

/// Absent texts first.
int compareTexts(const StringRef& left, const StringRef& right) {
  if (left.isPresent() != right.isPresent()) return left.isPresent() ? 1 : -1;
  return std::clamp(left.view().compare(right.view()), -1, 1);
}

/// The identified styles of one stylesheet and their links, by their numbers in the registry's order.
class WritingOrder {
 public:
  WritingOrder(const ZTSStylesheet& stylesheet, std::vector<Ref<ZTSStyle>> styles) : mStyles(std::move(styles)) {
    const auto count = static_cast<Index>(mStyles.size());
    std::unordered_map<const ZTSStyle*, Index> numbers;
    numbers.reserve(count);
    for (Index index = 0; index < count; ++index) numbers.emplace(mStyles[index].get(), index);
    mParents.assign(count, kNone);
    mIsAggregate.resize(count);
    for (Index index = 0; index < count; ++index) {
      mIsAggregate[index] = isAggregate(*mStyles[index]);
      // Ancestors of this stylesheet that the registry does not know are passed over, as they are in no list.
      for (const ZTSStyle* each = mStyles[index]->parent(); each != nullptr && each->stylesheet() == &stylesheet;
           each = each->parent()) {
        if (auto found = numbers.find(each); found != numbers.end()) {
          mParents[index] = found->second;
          break;
        }
      }
    }
  }

  void appendTo(std::vector<Ref<ZTSStyle>>& result, bool aggregates) {
    const auto count = static_cast<Index>(mStyles.size());
    // Where the question for the nearest ancestor goes on; a style itself while it is in the list.
    mAnswers.resize(count);
    for (Index index = 0; index < count; ++index)
      mAnswers[index] = mIsAggregate[index] == aggregates ? index : mParents[index];
    // The last style is inserted first: taking out begins with the first style.
    std::vector<Index> ancestors(count, kNone);
    for (Index index = 0; index < count; ++index) {
      if (mIsAggregate[index] != aggregates) continue;
      mAnswers[index] = mParents[index];
      ancestors[index] = nearest(mParents[index]);
    }
    std::vector<Index> next(count, kNone);
    Index first = kNone;
    for (Index index = count; index-- > 0;) {
      if (mIsAggregate[index] != aggregates) continue;
      Index& before = ancestors[index] == kNone ? first : next[ancestors[index]];
      next[index] = std::exchange(before, index);
    }
    for (Index index = first; index != kNone; index = next[index]) result.push_back(mStyles[index]);
  }

 private:
  /// The style itself or its nearest ancestor that is in the list, or none.
  Index nearest(Index style) {
    Index found = style;
    while (found != kNone && mAnswers[found] != found) found = mAnswers[found];
    while (style != kNone && style != found) style = std::exchange(mAnswers[style], found);
    return found;
  }

  std::vector<Ref<ZTSStyle>> mStyles;
  std::vector<Index> mParents;
  std::vector<bool> mIsAggregate;
  std::vector<Index> mAnswers;
};

}  // namespace

// ---- Anonymous styles

std::int32_t ZTSAnonymousStyleOrderingValue::indexOfStyle(ZTSStyle& style) {
  auto [place, isNew] = mStyleIndexMap.try_emplace(&style);
  if (isNew) place->second = {Ref<ZTSStyle>(&style), mNextIndex++};
  return place->second.index;
}

std::vector<Ref<ZTSStyle>> ZTSAnonymousStyleOrderingValue::styles() const {
  std::vector<Ref<ZTSStyle>> all;
  all.reserve(mStyleIndexMap.size());
  for (const auto& [address, seen] : mStyleIndexMap) all.push_back(seen.style);
  return all;
}

void ZTSAnonymousStyleOrderingValue::removeStyle(ZTSStyle& style) {
  const auto removed = mStyleIndexMap.extract(&style);  // released when the map is whole again
}

void ZTSAnonymousStyleOrderingMap::removeStylesNotIn(const ZTSStyleSet& styles) {
  for (auto& [parentIdentifier, value] : mValues) {
    for (const Ref<ZTSStyle>& style : value.styles()) {
      if (!styles.containsObject(style.get())) value.removeStyle(*style);
    }
  }
}

std::int32_t ZTSIndexOfAnonymousStyle(ZTSStyle& style, ZTSAnonymousStyleOrderingMap& map) {
  return map.valueForParentIdentifier(style.parentIdentifier()).indexOfStyle(style);
}

int ZTSCompareAnonymousStylesForDiff(ZTSStyle& left, ZTSStyle& right, ZTSAnonymousStyleOrderingMap& map) {
  if (&left == &right) return 0;
  if (const int order = compareTexts(left.parentIdentifier(), right.parentIdentifier()); order != 0) return order;
  return ZTSIndexOfAnonymousStyle(left, map) < ZTSIndexOfAnonymousStyle(right, map) ? -1 : 1;
}

void sortAnonymousStylesForDiff(std::vector<Ref<ZTSStyle>>& styles, ZTSAnonymousStyleOrderingMap& map) {
  // All indices are given in the order that the styles come in, before sorting compares any two.
  std::vector<std::pair<std::int32_t, Ref<ZTSStyle>>> indexed;
  indexed.reserve(styles.size());
  for (Ref<ZTSStyle>& style : styles) {
    const std::int32_t index = ZTSIndexOfAnonymousStyle(*style, map);
    indexed.emplace_back(index, std::move(style));
  }
  std::sort(indexed.begin(), indexed.end(), [](const auto& left, const auto& right) {
    const int order = compareTexts(left.second->parentIdentifier(), right.second->parentIdentifier());
    return order != 0 ? order < 0 : left.first < right.first;
  });
  styles.clear();
  for (auto& [index, style] : indexed) styles.push_back(std::move(style));
}

// ---- Identified styles

std::size_t ZTSDepthOfStyleInStylesheet(const ZTSStyle& style) noexcept {
  std::size_t depth = 0;
  for (const ZTSStyle* each = style.parent(); each != nullptr && each->stylesheet() == style.stylesheet();
       each = each->parent())
    ++depth;
  return depth;
}

int ZTSCompareIdentifiedStylesForDiff(const ZTSStyle& left, const ZTSStyle& right) {
  if (isAggregate(left) != isAggregate(right)) return isAggregate(right) ? -1 : 1;
  const std::size_t leftDepth = ZTSDepthOfStyleInStylesheet(left);
  const std::size_t rightDepth = ZTSDepthOfStyleInStylesheet(right);
  if (leftDepth != rightDepth) return leftDepth < rightDepth ? -1 : 1;
  return compareTexts(left.identifier(), right.identifier());
}

void sortIdentifiedStylesForDiff(std::vector<Ref<ZTSStyle>>& styles) {
  std::unordered_map<const ZTSStyle*, std::size_t> depths;
  depths.reserve(styles.size());
  std::vector<const ZTSStyle*> chain;
  const auto depthOf = [&](const ZTSStyle& style) {
    // Up to the first ancestor whose depth is known, then down again.
    for (const ZTSStyle* each = &style;
         each != nullptr && each->stylesheet() == style.stylesheet() && !depths.contains(each); each = each->parent()) {
      chain.push_back(each);
    }
    for (; !chain.empty(); chain.pop_back()) {
      const ZTSStyle* parent = chain.back()->parent();
      const bool isNested = parent != nullptr && parent->stylesheet() == style.stylesheet();
      depths.emplace(chain.back(), isNested ? depths.at(parent) + 1 : 0);
    }
    return depths.at(&style);
  };
  struct Ranked {
    bool isAggregate;
    std::size_t depth;
    Ref<ZTSStyle> style;
  };
  std::vector<Ranked> ranked;
  ranked.reserve(styles.size());
  for (Ref<ZTSStyle>& style : styles) {
    const bool aggregate = isAggregate(*style);
    const std::size_t depth = depthOf(*style);
    ranked.push_back({aggregate, depth, std::move(style)});
  }
  std::sort(ranked.begin(), ranked.end(), [](const Ranked& left, const Ranked& right) {
    const auto rank = [](const Ranked& each) { return std::tuple(each.isAggregate, each.depth); };
    if (rank(left) != rank(right)) return rank(left) < rank(right);
    return compareTexts(left.style->identifier(), right.style->identifier()) < 0;
  });
  styles.clear();
  for (Ranked& each : ranked) styles.push_back(std::move(each.style));
}

std::vector<Ref<ZTSStyle>> ZTSStylesheet::p_orderedIdentifiedStyles() const {
  std::vector<Ref<ZTSStyle>> registered;
  registered.reserve(mIdentifiedStyles.count());
  for (const ZTSStyleDictionary::Entry& entry : mIdentifiedStyles) registered.push_back(entry.style);
  std::vector<Ref<ZTSStyle>> result;
  result.reserve(registered.size());
  WritingOrder order(*this, std::move(registered));
  order.appendTo(result, false);
  order.appendTo(result, true);
  return result;
}

void ZTSStylesheet::p_cleanupAnonymousStyleOrderingMap() {
  if (!mAnonymousStyleOrderingMap) {
    mAnonymousStyleOrderingMap = std::make_unique<ZTSAnonymousStyleOrderingMap>();
  } else {
    mAnonymousStyleOrderingMap->removeStylesNotIn(mAnonymousStyles);
  }
}

}  // namespace zt
