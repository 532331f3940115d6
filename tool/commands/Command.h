// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// A command of the tool. Each stands in a file of its own and is listed once, in Commands.cpp.

#include <tool/console/Console.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <stdexcept>

namespace zt {

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
