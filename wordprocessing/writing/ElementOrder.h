// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zt {

/// Where a child stands among the others that its parent may have: a smaller number before a larger one. Both by their
/// local names, as the schema of ECMA-376 part 1, annex A orders them; what it does not know stands behind what it
/// knows, and tracked changes last.
int placeAmongChildren(std::string_view parent, std::string_view child);

}  // namespace zt
