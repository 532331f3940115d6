// SPDX-License-Identifier: MIT
#include <document/Finding.h>

namespace zt {

std::string_view severityName(Finding::Severity severity) {
  switch (severity) {
    case Finding::Severity::note: return "note";
    case Finding::Severity::warning: return "warning";
    case Finding::Severity::error: return "error";
  }
  return "error";
}

}  // namespace zt
