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

}  // namespace zt
