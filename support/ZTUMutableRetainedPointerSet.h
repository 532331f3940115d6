// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTUIdentitySet.h>

namespace zt {

/// An identity set that keeps its members alive.
template <class T>
using ZTUMutableRetainedPointerSet = ZTUIdentitySet<T, Ref<T>, RefPolicy<T>>;

}  // namespace zt
