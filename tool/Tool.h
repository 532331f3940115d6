// SPDX-License-Identifier: MIT
#pragma once

#include <tool/commands/Command.h>

#include <string>
#include <vector>

namespace zt {

/// Runs the tool with its arguments (the program's own name left out) and answers the exit code.
/// Nothing is thrown: every failure becomes one line on `console.err` and a code.
int runTool(const std::vector<std::string>& arguments, const Console& console);

/// The console of the process: standard output and error, colour only on a terminal, never with
/// NO_COLOR set or on a dumb terminal.
Console processConsole();

}  // namespace zt
