// SPDX-License-Identifier: MIT
#include <tool/commands/Commands.h>

namespace zt {

// A new command adds its maker here and its name to the list below.
std::unique_ptr<Command> makeApplyCommand();
std::unique_ptr<Command> makeCleanupCommand();
std::unique_ptr<Command> makeConvertCommand();
std::unique_ptr<Command> makeDedupeCommand();
std::unique_ptr<Command> makeDemoteCommand();
std::unique_ptr<Command> makeDiffCommand();
std::unique_ptr<Command> makeEditCommand();
std::unique_ptr<Command> makeExplainCommand();
std::unique_ptr<Command> makeMergeCommand();
std::unique_ptr<Command> makeNormalizeCommand();
std::unique_ptr<Command> makePromoteCommand();
std::unique_ptr<Command> makeRemoveCommand();
std::unique_ptr<Command> makeRenameCommand();
std::unique_ptr<Command> makeReparentCommand();
std::unique_ptr<Command> makeSetCommand();
std::unique_ptr<Command> makeShowCommand();
std::unique_ptr<Command> makeStatsCommand();
std::unique_ptr<Command> makeTreeCommand();
std::unique_ptr<Command> makeValidateCommand();
std::unique_ptr<Command> makeVaryCommand();

std::vector<std::unique_ptr<Command>> makeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  for (auto* make :
       {makeExplainCommand, makeTreeCommand,     makeShowCommand,    makeStatsCommand,     makeValidateCommand,
        makeSetCommand,     makeVaryCommand,     makeDedupeCommand,  makeCleanupCommand,   makeRenameCommand,
        makeMergeCommand,   makeReparentCommand, makeRemoveCommand,  makePromoteCommand,   makeDemoteCommand,
        makeApplyCommand,   makeEditCommand,     makeConvertCommand, makeNormalizeCommand, makeDiffCommand}) {
    commands.push_back(make());
  }
  return commands;
}

}  // namespace zt
