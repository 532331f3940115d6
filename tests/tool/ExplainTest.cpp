// SPDX-License-Identifier: MIT
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace {

using namespace zt::test;
using Json = nlohmann::json;

std::string text(const std::string& name, const std::string& parent, const std::string& attributes) {
  return "<style:style style:family='text' style:name='" + name + "' style:parent-style-name='" + parent +
         "'><style:text-properties " + attributes + "/></style:style>\n";
}

class ExplainTest : public testing::Test {
 protected:
  ToolRun explain(std::vector<std::string> arguments) { return run("explain", std::move(arguments)); }
  ToolRun run(const std::string& command, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {command, file});
    return runTool(arguments);
  }

  TemporaryFolder folder;
  std::string file = folder.write(
      "x.fodt",
      flat("<style:default-style style:family='text'><style:text-properties fo:font-size='12pt' fo:color='#000000'/>"
           "</style:default-style>\n" +
               text("Base", "", "fo:font-size='10pt' fo:color='#ff0000'") + text("Half", "Base", "fo:font-size='50%'") +
               paragraphStyle("Base"),
           text("T1", "Half", "fo:font-size='50%' fo:color='#0000ff'") + text("T2", "Half", "fo:color='#0000ff'")));
};

TEST_F(ExplainTest, SaysWhatWinsWhatItIsAShareOfAndWhatIsHidden) {
  const Json style = explain({"T1", "--json"}).json()["styles"][0];
  EXPECT_EQ(style["chain"], Json({"flat:text:T1", "text:Half", "text:Base", "text"}));
  EXPECT_EQ(style["line"], 6);
  EXPECT_EQ(style["values"]["text.fo.font-size"], "2.5pt");
  const Json size = style["properties"]["text.fo.font-size"];
  EXPECT_EQ(size["pt"], 2.5);
  std::vector<std::string> entries;
  for (const Json& entry : size["entries"])
    entries.push_back(entry["style"].get<std::string>() + ' ' + entry["value"].get<std::string>() + ' ' +
                      entry["role"].get<std::string>());
  EXPECT_THAT(entries, testing::ElementsAre("flat:text:T1 50% wins", "text:Half 50% base", "text:Base 10pt base",
                                            "text 12pt hidden"));
  EXPECT_EQ(style["properties"]["text.fo.color"]["entries"].size(), 3u);

  EXPECT_EQ(explain({"T1", "text.fo.color"}).out,
            "text.fo.color of flat:text:T1 is #0000ff\n"
            "  > flat:text:T1  #0000ff          wins  " +
                file +
                ":6\n"
                "    text:Half     .\n"
                "    text:Base     #ff0000          hidden  " +
                file +
                ":3\n"
                "    text          #000000          hidden  " +
                file + ":2\n");
}

TEST_F(ExplainTest, FindsStylesAsPeopleCallThemAndSaysWhenItCannot) {
  EXPECT_EQ(explain({"Base", "--json"}).json()["styles"].size(), 2u);
  EXPECT_EQ(explain({"text:Base", "--json"}).json()["styles"].size(), 1u);
  EXPECT_EQ(explain({"--json"}).json()["styles"].size(), 7u);  // five of the file, two roots of which one is made
  EXPECT_EQ(explain({"Nobody"}).code, 2);
  EXPECT_THAT(explain({"T1", "text.fo.nothing"}).err, testing::HasSubstr("nothing sets 'text.fo.nothing' for T1"));
}

TEST_F(ExplainTest, TheForestCountsChildrenInEveryForm) {
  EXPECT_EQ(run("tree", {}).out,
            "paragraph  (1 named, 0 automatic)\n"
            "└─ paragraph:Base\n"
            "text  (1 named, 0 automatic)\n"
            "└─ text:Base  (1 named, 0 automatic)\n"
            "   └─ text:Half  (0 named, 2 automatic)\n");
  EXPECT_THAT(run("tree", {"--family", "text", "--all"}).out,
              testing::HasSubstr("      ├─ flat:text:T1\n      └─ flat:text:T2\n"));
  const Json nodes = run("tree", {"--json"}).json()["nodes"];
  ASSERT_EQ(nodes.size(), 5u);
  EXPECT_EQ(nodes[4]["parent"], "text:Base");
  EXPECT_EQ(nodes[4]["automatic_children"], 2);
  EXPECT_THAT(run("tree", {"--dot"}).out,
              testing::HasSubstr("\"text:Half\" [label=\"text:Half (+2)\"];\n  \"text:Half\" -> \"text:Base\";\n"));
  EXPECT_EQ(run("tree", {"--family", "nothing"}).code, 2);
}

TEST_F(ExplainTest, BrokenAndHugeDocumentsEndWellInEveryCommand) {
  std::string chain = text("S0", "", "fo:font-size='12pt'");
  for (int index = 1; index <= 20'000; ++index) {
    chain += "<style:style style:family='text' style:name='S" + std::to_string(index) + "' style:parent-style-name='S" +
             std::to_string(index - 1) + "'/>\n";
  }
  file = folder.write("chain.fodt", flat(chain));
  EXPECT_EQ(explain({"S20000", "--json"}).json()["styles"][0]["chain_length"], 20'002);
  EXPECT_EQ(explain({"text:S20000", "text.fo.font-size"}).code, 0);
  for (const char* option : {"--json", "--dot"}) EXPECT_EQ(run("tree", {option}).code, 0) << option;
  EXPECT_LT(run("tree", {}).out.size(), 6'000'000u);

  file = folder.write(
      "cut.fodt", flat(text("Kept", "", "fo:font-size='12pt'") + text("Cut", "", "fo:font-size='1")).substr(0, 1020));
  const ToolRun cut = explain({"--json"});
  EXPECT_EQ(cut.code, 1) << cut.err;
  EXPECT_EQ(cut.json()["styles"].size(), 2u);
}

}  // namespace
