// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTUIdentitySet.h>

namespace zt {

/// An identity set that does not hold its members: relations, visited marks, snapshots.
template <class T>
using ZTUMutablePointerSet = ZTUIdentitySet<T, T*, PointerPolicy<T>>;

}  // namespace zt
