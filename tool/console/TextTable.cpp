// SPDX-License-Identifier: MIT
#include <tool/console/TextTable.h>

#include <document/text/Utf8.h>

#include <sys/ioctl.h>
#include <unistd.h>
#include <utf8proc.h>

#include <algorithm>
#include <numeric>
#include <ostream>

namespace zt {

namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";
constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 4;

struct Character {
  std::string_view bytes;  // what is printed for it
  std::size_t width = 1;
};

/// Takes the next character off the text.
Character next(std::string_view& text) {
  const std::string_view before = text;
  const auto character = takeCharacter(text);
  if (!character) return {kReplacementCharacter, 1};
  const bool isControl = *character < 0x20 || (*character >= 0x7F && *character < 0xA0);
  // What turns the direction of writing would tear the table apart.
  const bool turns = (*character >= 0x202A && *character <= 0x202E) || (*character >= 0x2066 && *character <= 0x2069);
  if (isControl || turns) return {kReplacementCharacter, 1};
  const int width = utf8proc_charwidth(static_cast<utf8proc_int32_t>(*character));
  return {before.substr(0, before.size() - text.size()), static_cast<std::size_t>(width)};
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) width += next(text).width;
  return width;
}

std::string printable(std::string_view text, std::size_t width) {
  std::string whole;
  std::size_t used = 0;
  std::size_t roomy = 0;  // the bytes that leave room for the ellipsis
  while (!text.empty()) {
    const Character character = next(text);
    used += character.width;
    if (width != 0 && used > width) return whole.substr(0, roomy).append(kEllipsis);
    whole += character.bytes;
    if (used < width) roomy = whole.size();
  }
  return whole;
}

std::string padded(std::string_view text, std::size_t width) {
  std::string line(text);
  return line.append(width - std::min(width, displayWidth(text)), ' ');
}

std::size_t terminalWidth() {
  winsize size{};
  return isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void TextTable::addRow(std::vector<std::string> cells) {
  cells.resize(mHeadings.size());
  mRows.push_back(std::move(cells));
}

std::vector<std::size_t> TextTable::widthsFor(std::size_t width) const {
  std::vector<std::size_t> widths(mHeadings.size(), 0);
  for (std::size_t column = 0; column < widths.size(); ++column) {
    widths[column] = displayWidth(mHeadings[column]);
    for (const auto& row : mRows) widths[column] = std::max(widths[column], displayWidth(row[column]));
  }
  if (width == 0) return widths;
  const auto total = [&] { return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1)); };
  while (total() > width) {
    const auto widest = std::max_element(widths.begin(), widths.end());
    if (*widest <= kNarrowest) break;
    // Down to the second widest at once, so that a text of a million characters takes no million steps.
    std::size_t second = kNarrowest;
    for (auto each = widths.begin(); each != widths.end(); ++each) {
      if (each != widest) second = std::max(second, *each);
    }
    const std::size_t excess = total() - width;
    *widest -= std::min(excess, std::max<std::size_t>(1, *widest - std::min(*widest, second)));
  }
  return widths;
}

void TextTable::print(std::ostream& out, std::size_t width) const {
  if (mHeadings.empty()) return;
  const std::vector<std::size_t> widths = widthsFor(width);
  const auto printRow = [&](const std::vector<std::string>& cells) {
    std::string line;
    std::size_t filled = 0;  // columns that the line takes
    std::size_t start = 0;   // where the next cell stands
    for (std::size_t column = 0; column < cells.size(); ++column) {
      const std::string cell = widths[column] == 0 ? std::string() : printable(cells[column], widths[column]);
      if (!cell.empty()) {
        line.append(start - filled, ' ');
        line += cell;
        filled = start + displayWidth(cell);
      }
      start += widths[column] + kGap;
    }
    out << (width != 0 ? printable(line, width) : line) << '\n';
  };
  printRow(mHeadings);
  for (const auto& row : mRows) printRow(row);
}

}  // namespace zt
