// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The two streams that a command writes to, and what it answers to the shell.

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

}  // namespace zt
