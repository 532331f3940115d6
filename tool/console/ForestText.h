// SPDX-License-Identifier: MIT
#pragma once

#include <insight/explain/StyleForest.h>
#include <tool/console/Console.h>

namespace zt {

/// Lines with branches; below a fixed depth the branches give way to a number.
void printForest(const StyleForest& forest, const Console& console);

}  // namespace zt
