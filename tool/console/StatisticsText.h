// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace zt {

/// The counts of `styleStatistics` that a person asks for first, as lines of text.
std::string statisticsAsText(const nlohmann::ordered_json& statistics);

}  // namespace zt
