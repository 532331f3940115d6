// SPDX-License-Identifier: MIT
#pragma once

#include <insight/explain/Explanation.h>

#include <nlohmann/json.hpp>

namespace zt {

/// A style as JSON: who it is, its chain, the effective values by key (null where one is explicitly
/// none), and under "properties" for each key the value, its kind, its size in millimetres and
/// points where it is a length, and the entries of the chain with their roles.
nlohmann::ordered_json explanationAsJson(const ZTDocument& document, const StyleExplanation& explanation);

}  // namespace zt
