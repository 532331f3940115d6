// SPDX-License-Identifier: MIT
#include <tool/Tool.h>

#include <platform/ZTVersion.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace {

using namespace zt::test;

TEST(ToolTest, ExitCodesAndChannelsAreWhatTheHelpSays) {
  const TemporaryFolder folder;
  const std::string good = folder.write("good.fodt", flat(paragraphStyle("A")));
  const std::string cut =
      folder.write("cut.fodt", flat(paragraphStyle("A")).substr(0, flat(paragraphStyle("A")).size() - 60));
  const std::string bad = folder.write("bad.fodt", "nothing");
  struct Case {
    std::vector<std::string> arguments;
    int code;
    bool hasOut;
    std::string err;  // part of it; nothing at all if empty
  };
  const Case cases[] = {
      {{"--help"}, 0, true, ""},
      {{"--version"}, 0, true, ""},
      {{"stats", "--help"}, 0, true, ""},
      {{"stats", good}, 0, true, ""},
      {{"stats", cut}, 1, true, "cut.fodt:"},
      {{"stats", bad}, 3, false, "bad.fodt:1: "},
      {{"stats", "/nowhere"}, 3, false, "/nowhere: no such file"},
      {{}, 2, false, "subcommand is required"},
      {{"paint"}, 2, false, "there is no command 'paint'"},
      {{"stats"}, 2, false, "FILE is required"},
      {{"stats", "--colour", good}, 2, false, "--colour"},
  };
  for (const Case& item : cases) {
    const ToolRun run = runTool(item.arguments);
    EXPECT_EQ(run.code, item.code) << testing::PrintToString(item.arguments) << run.err;
    EXPECT_EQ(!run.out.empty(), item.hasOut) << testing::PrintToString(item.arguments);
    EXPECT_THAT(run.err,
                item.err.empty() ? testing::Eq("") : testing::Matcher<std::string>(testing::HasSubstr(item.err)));
    EXPECT_EQ(run.out.find('\033'), std::string::npos);
  }
  EXPECT_EQ(runTool({"--version"}).out, std::string("ztstyles ") + zt::versionString() + '\n');
}

}  // namespace
