#pragma once
/// @file
/// A command of the tool. Each stands in a file of its own and is listed once, in Commands.cpp.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <iosfwd>
#include <string>

namespace zt {

/// What the tool answers to the shell.
enum class ExitCode : int {
  done = 0,
  findings = 1,         ///< done, but there is something to tell
  wrongUse = 2,         ///< unknown command, option, style or property
  unreadableInput = 3,  ///< nothing could be read
};

/// Where a command writes. Data goes to `out`, talk to `err`.
struct Console {
  std::ostream& out;
  std::ostream& err;
  bool hasColour = false;        ///< `out` is a terminal and the user has not switched colour off
  bool canShowProgress = false;  ///< `err` is a terminal

  /// `text` in bold, faint or a colour where the terminal may show it.
  [[nodiscard]] std::string bold(const std::string& text) const { return wrapped("1", text); }
  [[nodiscard]] std::string faint(const std::string& text) const { return wrapped("2", text); }
  [[nodiscard]] std::string green(const std::string& text) const { return wrapped("32", text); }
  [[nodiscard]] std::string yellow(const std::string& text) const { return wrapped("33", text); }

 private:
  [[nodiscard]] std::string wrapped(const char* code, const std::string& text) const {
    return hasColour ? "\033[" + std::string(code) + 'm' + text + "\033[0m" : text;
  }
};

/// Thrown by a command for wrong use that its options could not tell, such as a style that is not there.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  /// Adds the subcommand with its options, description and examples, and answers it. The options
  /// write into fields of this object.
  virtual CLI::App* addTo(CLI::App& tool) = 0;

  /// Runs it once the options are set. `ReadError`, `UsageError` and others are turned into exit
  /// codes by the tool.
  virtual ExitCode run(const Console& console) = 0;
};

}  // namespace zt
