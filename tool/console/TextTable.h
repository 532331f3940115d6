// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Tables for a terminal: aligned by the width that characters take there, cut to the width that is left.

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The columns that the text takes on a terminal: 2 for wide characters, 0 for marks that join the one before.
std::size_t displayWidth(std::string_view text);

/// The text in one line that is safe on a terminal: control characters and invalid bytes are replaced. Cut to so
/// many columns, with an ellipsis as the last; 0 does not cut.
std::string printable(std::string_view text, std::size_t width = 0);

/// The text with blanks up to so many columns.
std::string padded(std::string_view text, std::size_t width);

/// The columns of the terminal that standard output is; 0 if it is none.
std::size_t terminalWidth();

/// Rows of cells under headings.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> headings) : mHeadings(std::move(headings)) {}

  /// As many cells as there are headings; missing ones are empty, further ones are dropped.
  void addRow(std::vector<std::string> cells);

  /// One line a row after a line of headings, columns two blanks apart. Where a line would be longer than `width`
  /// (0: any length), the widest columns give way first.
  void print(std::ostream& out, std::size_t width) const;

 private:
  [[nodiscard]] std::vector<std::size_t> widthsFor(std::size_t width) const;

  std::vector<std::string> mHeadings;
  std::vector<std::vector<std::string>> mRows;
};

}  // namespace zt
