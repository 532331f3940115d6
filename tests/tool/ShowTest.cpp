// SPDX-License-Identifier: MIT
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>
#include <tool/console/TextTable.h>

#include <gmock/gmock.h>

namespace {

using namespace zt;
using namespace zt::test;
using ::testing::HasSubstr;

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

TEST(ShowTest, ShowsStylesheetsStylesAndReferences) {
  const std::string file = dataPath("03-small-invoice.fodt");
  const ToolRun all = runTool({"show", file, "--width", "60"});
  EXPECT_EQ(all.code, 0);
  EXPECT_THAT(all.out, HasSubstr("styles of the document\nclass"));
  EXPECT_THAT(all.out, HasSubstr("\nParagraphSt\u2026"));
  std::istringstream lines(all.out);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), 60u) << line;

  const auto tables = runTool({"show", "--json", file}).json()["tables"];
  ASSERT_EQ(tables.size(), 4u);
  EXPECT_EQ(tables[0]["rows"][0]["parentAddress"], tables[2]["rows"][0]["address"]);
  EXPECT_EQ(tables[2]["rows"][0]["parentAddress"], "0x0");
  const auto& styles = tables[1]["rows"];
  EXPECT_TRUE(std::any_of(styles.begin(), styles.end(), [](const auto& row) {
    return row["identifier"] == "paragraph:Heading" && row["class"] == "ParagraphStyle" && row["label"] == "Heading";
  }));

  const auto references = runTool({"show", "--json", file, "--style", "outline:Outline"}).json()["tables"][0]["rows"];
  ASSERT_GE(references.size(), 10u);
  EXPECT_EQ(references[0]["class"], "ListLevelStyle");
  EXPECT_NE(references[0]["key"], "no key found");
  EXPECT_EQ(runTool({"show", file, "--style", "nowhere"}).code, 2);
}

TEST(ValidateTest, TellsFindingsOfTheFileAndOfTheModelWithTheirPlaces) {
  const TemporaryFolder folder;
  const std::string good = folder.write("good.fodt", flat(paragraphStyle("A")));
  EXPECT_EQ(runTool({"validate", good}).code, 0);
  const ToolRun unclean = runTool({"validate", (dataPath("04-medium-outline-exporter")).string()});
  EXPECT_EQ(unclean.code, 1);
  EXPECT_THAT(unclean.out, HasSubstr("styles.xml:317: warning: paragraph:OrgSrcBlockLastLine: the parent"));
  EXPECT_EQ(nlohmann::json::parse(runTool({"validate", "--json", good}).out)["findings"].size(), 0u);
  EXPECT_EQ(runTool({"validate", "/nowhere"}).code, 3);
}

}  // namespace
