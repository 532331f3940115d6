// SPDX-License-Identifier: MIT
#include <tool/console/Report.h>

#include <algorithm>
#include <ostream>

namespace zt {

void printFindings(const std::vector<Finding>& findings, const Console& console) {
  constexpr std::size_t kMost = 200;
  for (std::size_t index = 0; index < std::min(findings.size(), kMost); ++index) {
    const Finding& finding = findings[index];
    console.err << severityName(finding.severity) << ": " << finding.place.text() << ": ";
    if (!finding.style.empty()) console.err << finding.style << ": ";
    console.err << finding.message << '\n';
  }
  if (findings.size() > kMost) console.err << "... and " << findings.size() - kMost << " more findings\n";
}

void printJson(const nlohmann::ordered_json& json, const Console& console) {
  console.out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

ExitCode codeFor(const std::vector<Finding>& findings) {
  return findings.empty() ? ExitCode::done : ExitCode::findings;
}

}  // namespace zt
