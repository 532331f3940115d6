// SPDX-License-Identifier: MIT
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>
#include <tool/console/TextTable.h>

#include <gmock/gmock.h>

namespace {

using namespace zt;
using namespace zt::test;
using ::testing::HasSubstr;

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
  const auto heading = std::find_if(styles.begin(), styles.end(),
                                    [](const auto& row) { return row["identifier"] == "paragraph:Heading"; });
  ASSERT_NE(heading, styles.end());
  EXPECT_EQ((*heading)["class"], "ParagraphStyle");
  EXPECT_EQ((*heading)["label"], "Heading");

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
