#pragma once

#include <app/cli/Command.h>
#include <app/explain/Explanation.h>

#include <nlohmann/json.hpp>

namespace zt {

/// A style as JSON: who it is, its chain, the effective values by key (null where one is explicitly
/// none), and under "properties" for each key the value, its kind, its size in millimetres and
/// points where it is a length, and the entries of the chain with their roles.
nlohmann::ordered_json explanationAsJson(const ZTDocument& document, const StyleExplanation& explanation);

/// A style for people: its chain, then one line a property, with who sets it and what is hidden.
void printExplanation(const ZTDocument& document, const StyleExplanation& explanation, const Console& console);

/// One property of a style for people, level by level, those that set nothing included.
void printProperty(const ZTDocument& document, const StyleExplanation& explanation, const ExplainedProperty& property,
                   const Console& console);

}  // namespace zt
