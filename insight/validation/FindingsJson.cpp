// SPDX-License-Identifier: MIT
#include <insight/validation/FindingsJson.h>

namespace zt {

nlohmann::ordered_json findingsAsJson(const std::vector<Finding>& findings) {
  auto json = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    json.push_back({{"severity", severityName(finding.severity)},
                    {"code", finding.code},
                    {"file", finding.place.file},
                    {"line", finding.place.line},
                    {"style", finding.style},
                    {"message", finding.message}});
  }
  return json;
}

}  // namespace zt
