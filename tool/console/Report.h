// SPDX-License-Identifier: MIT
#pragma once

#include <document/Finding.h>
#include <tool/console/Console.h>

#include <nlohmann/json.hpp>

#include <vector>

namespace zt {

/// One line for each finding on the console's error stream; after the two-hundredth, how many more there are.
void printFindings(const std::vector<Finding>& findings, const Console& console);

/// Prints JSON, indented, with a newline at the end. Text that is no UTF-8 is replaced, not refused.
void printJson(const nlohmann::ordered_json& json, const Console& console);

/// `findings` if there are any, else `done`.
ExitCode codeFor(const std::vector<Finding>& findings);

}  // namespace zt
