// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/reading/RawDocument.h>

#include <nlohmann/json.hpp>

namespace zt {

/// Counts over the styles of a file: how many there are, how deep they inherit, how much of them is redundant, what the
/// text uses. Names that repeat count once (the later of named styles, the earlier of automatic ones). Expected time
/// linear in the size of the document times the length of its inheritance chains.
///
/// Repeated names, loops of parents and references to nothing are mended in the document that is made of the file, so
/// that only the file can answer; `modelStatistics` counts what the document has.
nlohmann::ordered_json styleStatistics(const RawDocument& document);

}  // namespace zt
