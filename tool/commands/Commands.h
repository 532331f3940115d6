// SPDX-License-Identifier: MIT
#pragma once

#include <tool/commands/Command.h>

#include <memory>
#include <vector>

namespace zt {

/// All commands of the tool, in the order in which the help shows them.
std::vector<std::unique_ptr<Command>> makeCommands();

}  // namespace zt
