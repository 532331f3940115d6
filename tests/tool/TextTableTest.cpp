// SPDX-License-Identifier: MIT
#include <tool/console/TextTable.h>

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace zt;

std::string tableOf(std::vector<std::vector<std::string>> rows, std::size_t width) {
  TextTable table(rows.front());
  for (std::size_t row = 1; row < rows.size(); ++row) table.addRow(rows[row]);
  std::ostringstream out;
  table.print(out, width);
  return out.str();
}

TEST(TextTableTest, MeasuresWhatATerminalShows) {
  const std::pair<const char*, std::size_t> cases[] = {
      {"", 0},         {"abc", 3},  {"\u00e9", 1},       {"e\u0301", 1}, {"\u8a9e", 2},    {"\U0001F600", 2},
      {"\xff\xc3", 2}, {"a\tb", 3}, {"\u0e01\u0e34", 1}, {"\u0902", 0},  {"\U0001F6DC", 2}};
  for (const auto& [text, width] : cases) EXPECT_EQ(displayWidth(text), width) << text;

  EXPECT_EQ(printable("a\033[1mb\n"), "a\uFFFD[1mb\uFFFD");
  EXPECT_EQ(printable("\u202Eabc"), "\uFFFDabc");
  EXPECT_EQ(printable("abcd", 4), "abcd");
  EXPECT_EQ(printable("abcde", 4), "abc\u2026");
  EXPECT_EQ(printable("\u8a9e\u8a9e\u8a9e", 4), "\u8a9e\u2026");  // no half of a wide character
  EXPECT_EQ(printable("xe\u0301", 2), "xe\u0301");
  EXPECT_EQ(printable("ab", 1), "\u2026");
}

TEST(TextTableTest, AlignsColumnsAndCutsTheWidestFirst) {
  EXPECT_EQ(tableOf({{"a", "b"}, {"\u8a9e", "x"}, {"long", ""}}, 0), "a     b\n\u8a9e    x\nlong\n");
  EXPECT_EQ(tableOf({{"a", "b"}, {"123456789", "123456"}}, 14), "a       b\n12345\u2026  123456\n");
  EXPECT_EQ(tableOf({{"a", "b"}, {"123456789", "123456"}}, 5), "a   \u2026\n123\u2026\u2026\n");
  for (const std::size_t width : {1, 2, 7, 20, 1000}) {
    std::istringstream lines(
        tableOf({{"one", "two", "three"}, {std::string(100'000, 'x'), "\u8a9e\u8a9e\u8a9e", "z"}}, width));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), width);
  }
}

}  // namespace
