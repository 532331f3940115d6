// SPDX-License-Identifier: MIT
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace {

using namespace zt::test;

std::string styles() {
  const auto sized = [](const char* size) {
    return "><style:text-properties fo:font-size=\"" + std::string(size) + "\"/></style:style>";
  };
  return paragraphStyle("Base", sized("10pt")) + paragraphStyle("Fixed", " style:parent-style-name=\"Base\"/>") +
         paragraphStyle("Below", " style:parent-style-name=\"Fixed\"/>") +
         paragraphStyle("Own", " style:parent-style-name=\"Base\"" + sized("8pt"));
}

TEST(SetCommandTest, TellsInOrderWhatAChangeItsUndoAndItsRedoSetOff) {
  const TemporaryFolder folder;
  const std::string file = folder.write("a.fodt", flat(styles()));
  const ToolRun run =
      runTool({"set", file, "Base", "text.fo.font-size=14pt", "--lock", "Fixed", "--undo", "--redo", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const auto json = run.json();
  const auto told = [&](std::size_t phase) {
    std::vector<std::string> lines;
    for (const auto& event : json["phases"][phase]["events"]) {
      lines.push_back(event["event"].get<std::string>() + " " + event.value("style", event.value("text", "")));
    }
    return lines;
  };
  const std::vector<std::string> reached = {"told paragraph:Below", "posted paragraph:Below",
                                            "told paragraph:Fixed", "posted paragraph:Fixed",
                                            "told paragraph:Base",  "posted paragraph:Base"};
  std::vector<std::string> expected = {
      "undo-step setValue:forProperty:", "undo-step lockedStyleRemoveValuesForProperties:notificationFlags:",
      "kept paragraph:Fixed"};
  expected.insert(expected.end(), reached.begin(), reached.end());
  EXPECT_EQ(told(0), expected);
  expected[0] = "undo-step lockedStyleSetValuesForProperties:notificationFlags:";
  expected[1] = "undo-step setValue:forProperty:";
  EXPECT_EQ(told(1), expected);
  EXPECT_EQ(told(2).size(), expected.size() + 4) << "what the locked style keeps is announced on redo";
  for (const auto& phase : json["phases"]) {
    EXPECT_EQ(phase["after"]["paragraph:Fixed"]["text.fo.font-size"], "10pt");
    EXPECT_EQ(phase["after"]["paragraph:Base"]["text.fo.font-size"], phase["phase"] == "undo" ? "10pt" : "14pt");
  }
  const ToolRun text = runTool({"set", file, "Own", "text.fo.font-size", "text.fo.color=#ff0000", "--trace"});
  EXPECT_EQ(text.code, 0);
  EXPECT_THAT(text.out, testing::HasSubstr("paragraph:Own  text.fo.font-size: 8pt -> 10pt"));
  EXPECT_THAT(text.out, testing::HasSubstr("told       paragraph:Own: text.fo.color\n"));
}

TEST(SetCommandTest, RefusesWhatItCannotChange) {
  const TemporaryFolder folder;
  const std::string file = folder.write("a.fodt", flat(styles()));
  for (const auto& [arguments, error] : std::initializer_list<std::pair<std::vector<std::string>, std::string>>{
           {{"Nobody", "text.fo.font-size=1pt"}, "no style 'Nobody'"},
           {{"Base", "text.fo.size=1pt"}, "has no property 'text.fo.size'"},
           {{"Base", "text.fo.font-size=large"}, "text.fo.font-size does not take 'large'"},
           {{"Base", "text.fo.font-size=1pt", "--redo"}, "--undo"},
           {{"Base"}, "required"}}) {
    std::vector<std::string> all = {"set", file};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ToolRun run = runTool(all);
    EXPECT_EQ(run.code, 2) << error;
    EXPECT_THAT(run.err, testing::HasSubstr(error));
    EXPECT_EQ(run.out, "");
  }
}

}  // namespace
