// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/reading/RawDocument.h>

#include <nlohmann/json.hpp>

#include <string>

namespace zt {

/// Counts over the styles of a document: how many there are, how deep they inherit, how much of
/// them is redundant, what the text uses. Names that repeat count once (the later of named styles,
/// the earlier of automatic ones). Expected time linear in the size of the document times the
/// length of its inheritance chains.
nlohmann::ordered_json styleStatistics(const RawDocument& document);

/// The counts that a person asks for first, as lines of text.
std::string statisticsAsText(const nlohmann::ordered_json& statistics);

}  // namespace zt
