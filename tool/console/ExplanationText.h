// SPDX-License-Identifier: MIT
#pragma once

#include <insight/explain/Explanation.h>
#include <tool/console/Console.h>

namespace zt {

/// A style for people: its chain, then one line a property, with who sets it and what is hidden.
void printExplanation(const ZTDocument& document, const StyleExplanation& explanation, const Console& console);

/// One property of a style for people, level by level, those that set nothing included.
void printProperty(const ZTDocument& document, const StyleExplanation& explanation, const ExplainedProperty& property,
                   const Console& console);

}  // namespace zt
