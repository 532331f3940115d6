// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTUMutableRetainedPointerSet.h>

namespace zt {

/// An identity set that keeps its members alive and cannot be changed: a snapshot.
template <class T>
using ZTURetainedPointerSet = const ZTUMutableRetainedPointerSet<T>;

}  // namespace zt
