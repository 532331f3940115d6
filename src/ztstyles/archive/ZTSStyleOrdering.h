// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The orders in which a stylesheet's styles are written where archives are compared as text.

#include <ztstyles/ZTSStylesheet.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zt {

/// Remembers in which order the anonymous styles of one parent identifier were first seen. Holds its styles.
class ZT_EXPORT ZTSAnonymousStyleOrderingValue {
 public:
  /// The style's index, counted from 1; a style that has none gets the next one.
  std::int32_t indexOfStyle(ZTSStyle& style);
  /// In no particular order.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> styles() const;
  /// Forgets the style; its index is never handed out again.
  void removeStyle(ZTSStyle& style);

 private:
  struct Seen {
    Ref<ZTSStyle> style;
    std::int32_t index;
  };
  std::int32_t mNextIndex = 1;
  std::unordered_map<const ZTSStyle*, Seen> mStyleIndexMap;
};

/// An ordering value for each parent identifier, and one for the styles that have none.
class ZT_EXPORT ZTSAnonymousStyleOrderingMap {
 public:
  /// Made where there is none.
  ZTSAnonymousStyleOrderingValue& valueForParentIdentifier(const StringRef& parentIdentifier) {
    return mValues[parentIdentifier];
  }
  /// Forgets every style that is not in the set. Values that become empty stay.
  void removeStylesNotIn(const ZTSStyleSet& styles);

 private:
  std::unordered_map<StringRef, ZTSAnonymousStyleOrderingValue, StringRefHash> mValues;
};

/// The number of consecutive ancestors, from the parent on, that belong to the style's own stylesheet.
ZT_EXPORT std::size_t ZTSDepthOfStyleInStylesheet(const ZTSStyle& style) noexcept;

/// -1, 0 or 1: styles that are no aggregates first, then by depth, then by identifier.
ZT_EXPORT int ZTSCompareIdentifiedStylesForDiff(const ZTSStyle& left, const ZTSStyle& right);

/// The index of the style under its parent identifier, given now if it has none yet.
ZT_EXPORT std::int32_t ZTSIndexOfAnonymousStyle(ZTSStyle& style, ZTSAnonymousStyleOrderingMap& map);

/// -1, 0 or 1: by parent identifier, those without first, then by the order in which they were first seen.
ZT_EXPORT int ZTSCompareAnonymousStylesForDiff(ZTSStyle& left, ZTSStyle& right, ZTSAnonymousStyleOrderingMap& map);

/// The same orders for many styles at once: depths and indices are found once for each style.
ZT_EXPORT void sortIdentifiedStylesForDiff(std::vector<Ref<ZTSStyle>>& styles);
ZT_EXPORT void sortAnonymousStylesForDiff(std::vector<Ref<ZTSStyle>>& styles, ZTSAnonymousStyleOrderingMap& map);

}  // namespace zt
