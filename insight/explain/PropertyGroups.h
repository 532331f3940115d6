// SPDX-License-Identifier: MIT
#pragma once

#include <insight/explain/Explanation.h>

namespace zt {

/// Some properties are one to those who show text: the nearest style that sets any of a group decides for all of it. A
/// colour and "as the window has it" are such, a language and its country, an underline's style, type and width, the
/// forms of a line height, a font's name and its family, the breaks before and after. Notes for each property of the
/// explanation that is passed over in favour of a nearer one which that is.
void decideGroups(StyleExplanation& explanation);

}  // namespace zt
