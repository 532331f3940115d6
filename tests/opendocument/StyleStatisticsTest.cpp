// SPDX-License-Identifier: MIT
#include <opendocument/statistics/StyleStatistics.h>

#include <opendocument/package/Package.h>
#include <tests/TestDocuments.h>

namespace {

using namespace zt::test;
using Json = nlohmann::json;

Json statisticsOf(const std::filesystem::path& path) {
  return zt::styleStatistics(zt::RawDocument::read(zt::Package::read(path.string())));
}

// Every field of every document, as somebody else counted them.
TEST(StyleStatisticsTest, AgreesWithTheCountsOfOthersFieldByField) {
  const Json all = readJson(dataPath("stats.json"));
  ASSERT_EQ(all.size(), 5u);
  for (const auto& [name, expected] : all.items()) {
    const auto flatFile = dataPath(name + ".fodt");
    const Json found = statisticsOf(std::filesystem::exists(flatFile) ? flatFile : dataPath(name));
    EXPECT_GT(expected.size(), 30u);
    for (const auto& [field, value] : expected.items())
      EXPECT_EQ(found.value(field, Json()), value) << name << ' ' << field;
  }
}

TEST(StyleStatisticsTest, CountsWhatTheCleanDocumentsDoNotHave) {
  const auto style = [](const std::string& name, const std::string& rest) { return paragraphStyle(name, rest); };
  const std::string bold = "><style:text-properties fo:font-weight=\"bold\"/></style:style>";
  const std::string text = flat(
      style("A", " style:parent-style-name=\"B\"/>") + style("B", " style:parent-style-name=\"A\"/>") +
          style("C", " style:parent-style-name=\"B\"/>") + style("Self", " style:parent-style-name=\"Self\"/>") +
          style("Twice", "/>") + style("Twice", bold) + style("Lost", " style:parent-style-name=\"Nowhere\"/>"),
      style("Twice", " style:parent-style-name=\"P1\"" + bold) +
          style("P1", " style:parent-style-name=\"Twice\"" + bold) + style("P1", "/>") +
          "<text:list-style style:name=\"L1\"><text:list-level-style-number text:level=\"1\" text:style-name=\"\"/>"
          "</text:list-style>",
      "<text:p text:style-name=\"P1\"><text:span text:style-name=\"Gone\">x</text:span></text:p>"
      "<text:list text:style-name=\"L1\"/>");
  const TemporaryFolder folder;
  const Json found = statisticsOf(folder.write("odd.fodt", text));
  EXPECT_EQ(found["document"], "odd");
  EXPECT_EQ(found["named_total"], 6);
  EXPECT_EQ(found["automatic_total"], 2);
  EXPECT_EQ(found["duplicate_names"], Json({{"flat:paragraph:P1", 2}, {"paragraph:Twice", 2}}));
  EXPECT_EQ(found["in_parent_loops"], 3);
  EXPECT_EQ(found["named_chain_length"], Json({{"1", 3}, {"2", 2}, {"3", 1}}));
  EXPECT_EQ(found["missing_parents"], 2);
  EXPECT_EQ(found["parent_is_automatic"], 1);
  EXPECT_EQ(found["automatic_names_equal_to_named"], 1);
  EXPECT_EQ(found["entries_equal_to_inherited"], 1);  // of P1, from the later of the two named "Twice"
  EXPECT_EQ(found["automatic_equal_to_parent_after_collapse"], 1);
  EXPECT_EQ(found["dangling_references"], Json({"text:Gone"}));
  EXPECT_EQ(found["list_styles"], Json({{"automatic", 1}}));
  EXPECT_EQ(found["list_references_from_content"], 1);
  EXPECT_EQ(found["used_with_parents"], Json({{"named", 1}, {"automatic", 1}}));
}

}  // namespace
