// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

/// Lets go of styles that have left their stylesheet for good. Styles whose values refer to one another in a
/// circle would keep each other alive for ever: a group that nothing outside of it holds is freed. Whatever
/// somebody else holds, and everything that can be reached from there through parents and values, stays
/// untouched. An undo manager holds the styles that its actions concern: a document that goes lets go of its
/// actions (`removeAllActions`) before its stylesheet.
///
/// The styles of a group lose their own values before they are destroyed; nothing is told and nothing
/// registered. Styles that belong to a stylesheet are never looked into. Linear in the styles given and what
/// they reach.
///
/// A stylesheet does this when it is destroyed, with its styles and those that were removed from it; an
/// unarchiver with what it has read; `ZTSStyleCopies` with what was copied. Whoever makes circles outside of
/// stylesheets in some other way can call it himself.
ZT_EXPORT void freeReferenceGroups(std::vector<Ref<ZTSStyle>>&& styles);

/// Whether own values of the style are styles, or lists that may hold some. Linear in the own values.
ZT_EXPORT bool holdsStylesAsValues(const ZTSStyle& style);

}  // namespace zt
