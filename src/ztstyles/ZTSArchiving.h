// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What an application sets up before its first archive, and the metadata that it may leave in an archiver.

#include <support/ZTUMutablePointerSet.h>
#include <support/ZTUPair.h>
#include <support/ZTUPointerKeyDictionary.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

/// The element name of stylesheets.
inline constexpr const char* kElementName_StyleSheet = "stylesheet";

/// An empty `ZTUPointerKeyDictionary` under this key of an archiver's metadata switches on saving styles on
/// demand: each stylesheet that is written stores under itself a `ZTUPair` of its two container nodes (as
/// `NSValue`), and each style is written into them when it is needed. For `ZTVXMLArchiverForPB` only.
inline constexpr const char* kZTSStyleDelayedStyleSaveNodeDict = "ZTSStyleDelayedStyleSaveNodeDict";
/// Must stand beside it: an empty `ZTSSavedStyleSet`, to which each style is added that is written so.
inline constexpr const char* kZTSStyleDelayedStyleSavedSet = "ZTSStyleDelayedStyleSavedSet";
/// For the application's own use.
inline constexpr const char* kZTSStylesheetPersistenceArchiveOnlyTheseSet =
    "ZTSStylesheetPersistenceArchiveOnlyTheseSet";

using ZTSSavedStyleSet = ZTUBox<ZTUMutablePointerSet<ZTSStyle>>;

/// Registers the element name of stylesheets and the library's classes. To be called once, before the first archive.
/// Archives name classes, and a class can be found by its name once its class object exists: an application that
/// reads before it has made any style calls `styleClass()` of its style classes first.
ZT_EXPORT void ZTSInitArchivingClassToElementNameMappings();

/// Whether styles that can be rebuilt from their identifier are written as that alone: the user default
/// "UseStyleIdentifierShortcuts" as it was at the first call of the process.
ZT_EXPORT bool checkUsingIdentifiers();

}  // namespace zt
