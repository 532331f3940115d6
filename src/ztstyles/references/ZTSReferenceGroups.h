// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

/// Lets go of styles that have left their stylesheet for good. Styles whose values refer to one another in a
/// cycle would keep each other alive for ever: a group that nothing outside of it holds is freed. Whatever
/// somebody else holds, and everything that can be reached from there through parents and values, stays
/// untouched. An undo manager holds the styles that its actions concern: a document that goes lets go of its
/// actions (`removeAllActions`) before its stylesheet.
///
/// The styles of a group lose their own values before they are destroyed; nothing is told and nothing
/// registered. Styles that belong to a stylesheet are never looked into. Linear in the styles given and what
/// they reach; without references it is one look at each style's own values.
///
/// A stylesheet does this when it is destroyed, with its styles and with the aggregates that were removed from
/// it. Whoever makes such groups outside of stylesheets, as deep copies may be, can call it himself.
ZT_EXPORT void freeReferenceGroups(std::vector<Ref<ZTSStyle>>&& styles);

}  // namespace zt
