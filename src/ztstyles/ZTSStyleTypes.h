// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The small types that the operations of styles take and tell with.

#include <platform/NSNotificationCenter.h>

#include <cstdint>

namespace zt {

/// Posted when values of a style changed, with the style as object and the change record as user
/// information under `ZTSStyleNotificationChangeInfoKey`. A class may post under a name of its own.
ZT_EXPORT extern const NSNotificationName ZTSStylePropertiesChangedNotification;
/// Posted when a style's name changed, with the style as object and no user information.
ZT_EXPORT extern const NSNotificationName ZTSStyleNameChangedNotification;
/// The user information's key of the change record.
inline constexpr const char* ZTSStyleNotificationChangeInfoKey = "changeInfo";

/// In which phase of the undo manager a change made through the locked-style operations tells anybody.
enum ZTSStyleNotificationFlags : std::int32_t {
  kZTSStyleNotifyOnChange = 1,  ///< a plain change; also when there is no undo manager
  kZTSStyleNotifyOnUndo = 2,
  kZTSStyleNotifyOnRedo = 4
};

/// Whether equality asks for equal names too.
enum class CompareNames : bool { no, yes };

/// What the library notes on a style beside its fields.
enum class ZTSStyleMark : std::uint8_t {
  isOnRefusedWay = 2,      ///< its parent was refused, or it stands between the one refused and such a style
  isFiledAsOrphan = 4,     ///< listed in its stylesheet under the identifier it misses
  isUntried = 8,           ///< listed in its stylesheet as to be tried at every retry
  hasVariationIndex = 32,  ///< its stylesheet keeps an index over its children
  isIndexedValue = 64,     ///< an index has members that hold it as a value
  useWasRefused = 128,     ///< its parent, adjusting its own count, did not take the unit for this used child
  isDeparted = 0           ///< listed among those that left a stylesheet; a bit elsewhere
};

/// What it takes to set a mark: those who keep what it says right alone can make one.
class ZTSStyleMarkKey {
  friend class ZTSAggregateStyle;
  friend class ZTSDepartedStyles;
  friend class ZTSOrphanIndex;
  friend class ZTSStyle;
  friend class ZTSVariationIndexes;
  ZTSStyleMarkKey() = default;
};

}  // namespace zt
