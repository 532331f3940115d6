// SPDX-License-Identifier: MIT
#include <tool/Tool.h>

#include <document/Finding.h>
#include <document/editing/DocumentEditor.h>
#include <tool/commands/Commands.h>

#include <platform/ZTVersion.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>

namespace zt {

namespace {

int exitCode(ExitCode code) { return static_cast<int>(code); }

int fail(const Console& console, ExitCode code, const std::string& message) {
  console.err << "ztstyles: " << message << '\n';
  return exitCode(code);
}

int parseAndRun(std::vector<std::string> arguments, const Console& console) {
  CLI::App tool(
      "Shows, explains and checks the styles of OpenDocument texts (.odt, .ott, .fodt, or a folder that\n"
      "holds styles.xml and content.xml).",
      "ztstyles");
  tool.set_version_flag("--version", std::string("ztstyles ") + versionString());
  tool.set_help_flag("-h,--help", "Say what can be done and leave");
  tool.require_subcommand(1);
  tool.footer(
      "Exit codes: 0 done, 1 done with findings, 2 wrong use or refused, 3 unreadable input or output.\n"
      "`ztstyles COMMAND --help` tells more about a command, with examples.");

  const auto commands = makeCommands();
  std::vector<CLI::App*> subcommands;
  subcommands.reserve(commands.size());
  for (const auto& command : commands) subcommands.push_back(command->addTo(tool));

  if (!arguments.empty() && !arguments.front().empty() && arguments.front().front() != '-' &&
      std::none_of(subcommands.begin(), subcommands.end(),
                   [&](CLI::App* command) { return command->check_name(arguments.front()); })) {
    throw UsageError("there is no command '" + arguments.front() + "'; try `ztstyles --help`");
  }
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
  try {
    tool.parse(arguments);
  } catch (const CLI::Success& answer) {  // help and version
    tool.exit(answer, console.out, console.err);
    return exitCode(ExitCode::done);
  } catch (const CLI::ParseError& error) {
    console.err << "ztstyles: " << error.what() << "\nTry `ztstyles --help`.\n";
    return exitCode(ExitCode::wrongUse);
  }
  for (std::size_t index = 0; index < commands.size(); ++index) {
    if (!subcommands[index]->parsed()) continue;
    const ExitCode code = commands[index]->run(console);
    console.out.flush();
    if (!console.out) return fail(console, ExitCode::unreadableInput, "the output could not be written");
    return exitCode(code);
  }
  return exitCode(ExitCode::wrongUse);
}

}  // namespace

int runTool(const std::vector<std::string>& arguments, const Console& console) {
  try {
    return parseAndRun(arguments, console);
  } catch (const UsageError& error) {
    return fail(console, ExitCode::wrongUse, error.what());
  } catch (const EditError& error) {
    return fail(console, ExitCode::wrongUse, error.what());
  } catch (const ReadError& error) {
    return fail(console, ExitCode::unreadableInput, error.what());
  } catch (const std::bad_alloc&) {
    return fail(console, ExitCode::unreadableInput, "out of memory");
  } catch (const std::exception& error) {
    return fail(console, ExitCode::unreadableInput, error.what());
  }
}

Console processConsole() {
  const char* noColour = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool isPlain =
      (noColour != nullptr && *noColour != '\0') || terminal == nullptr || std::string(terminal) == "dumb";
  return {std::cout, std::cerr, !isPlain && isatty(STDOUT_FILENO) == 1, isatty(STDERR_FILENO) == 1};
}

}  // namespace zt
