// SPDX-License-Identifier: MIT
#pragma once

#include <document/Finding.h>

#include <nlohmann/json.hpp>

#include <vector>

namespace zt {

/// The findings as an array of objects with severity, code, file, line, style and message.
nlohmann::ordered_json findingsAsJson(const std::vector<Finding>& findings);

}  // namespace zt
