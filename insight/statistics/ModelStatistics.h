// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <nlohmann/json.hpp>

namespace zt {

/// Counts of a document's styles: named, automatic, list and default styles, what the text uses, own values.
nlohmann::ordered_json modelStatistics(const ZTDocument& document);

}  // namespace zt
