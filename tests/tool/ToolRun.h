// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The tool, run on documents.

#include <tool/Tool.h>

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

namespace zt::test {

/// What a run of the tool gave.
struct ToolRun {
  int code = 0;
  std::string out;
  std::string err;

  [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

inline ToolRun runTool(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  const int code = zt::runTool(arguments, {out, err});
  return {code, out.str(), err.str()};
}

}  // namespace zt::test
