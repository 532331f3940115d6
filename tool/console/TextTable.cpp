// SPDX-License-Identifier: MIT
#include <tool/console/TextTable.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <ostream>

namespace zt {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";
constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 4;

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Marks that join the character before them, and characters that show nothing.
constexpr Range kNoWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},  {0x05BF, 0x05BF}, {0x05C1, 0x05C2},
                              {0x05C4, 0x05C5}, {0x0610, 0x061A}, {0x064B, 0x065F},  {0x0670, 0x0670}, {0x06D6, 0x06DC},
                              {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED},  {0x0900, 0x0902}, {0x093A, 0x093A},
                              {0x093C, 0x093C}, {0x0941, 0x0948}, {0x094D, 0x094D},  {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},
                              {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},  {0x200B, 0x200F}, {0x202A, 0x202E},
                              {0x2060, 0x206F}, {0x20D0, 0x20FF}, {0x302A, 0x302D},  {0x3099, 0x309A}, {0xFE00, 0xFE0F},
                              {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x2614, 0x2615},   {0x2648, 0x2653},  {0x26A1, 0x26A1},
    {0x2705, 0x2705},   {0x274C, 0x274C},   {0x2753, 0x2755},   {0x2795, 0x2797},   {0x2B1B, 0x2B1C},  {0x2B50, 0x2B50},
    {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},  {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},  {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD}};

template <std::size_t count>
bool isIn(const Range (&ranges)[count], std::uint32_t character) {
  const auto* found = std::lower_bound(std::begin(ranges), std::end(ranges), character,
                                       [](const Range& range, std::uint32_t wanted) { return range.last < wanted; });
  return found != std::end(ranges) && found->first <= character;
}

struct Character {
  std::string_view bytes;  // what is printed for it
  std::size_t width = 1;
};

/// Takes the next character off the text: one well-formed sequence of UTF-8, else one byte.
Character next(std::string_view& text) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : (lead & 0xF0u) == 0xE0      ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  std::uint32_t character = length < 2 ? lead : lead & (0x7Fu >> length);
  bool isWhole = length != 0 && length <= text.size();
  for (std::size_t index = 1; isWhole && index < length; ++index) {
    isWhole = (byte(index) & 0xC0u) == 0x80;
    character = character << 6 | (byte(index) & 0x3Fu);
  }
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  isWhole =
      isWhole && character >= kLeast[length] && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
  if (!isWhole) {
    text.remove_prefix(1);
    return {kReplacement, 1};
  }
  const std::string_view bytes = text.substr(0, length);
  text.remove_prefix(length);
  const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
  // What turns the direction of writing would tear the table apart.
  const bool turns = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  if (isControl || turns) return {kReplacement, 1};
  return {bytes, isIn(kNoWidth, character) ? std::size_t{0} : isIn(kWide, character) ? std::size_t{2} : std::size_t{1}};
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
