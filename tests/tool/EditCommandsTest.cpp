// SPDX-License-Identifier: MIT
#include <tests/Files.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace {

using namespace zt::test;

std::string letter() {
  return flat(paragraphStyle("Body", "><style:text-properties fo:font-size=\"10pt\"/></style:style>") +
                  paragraphStyle("Quote", " style:parent-style-name=\"Body\"/>") + paragraphStyle("Unused"),
              paragraphStyle("P1", " style:parent-style-name=\"Body\"/>") +
                  paragraphStyle("P2", " style:parent-style-name=\"Body\"/>"),
              "<text:p text:style-name=\"P1\"/><text:p text:style-name=\"P2\"/><text:p text:style-name=\"Quote\"/>");
}

TEST(EditCommandsTest, WritesShowsAndRefuses) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string out = (folder / "out.fodt").string();
  struct Case {
    std::vector<std::string> arguments;
    std::string gone;   // from the text
    std::string there;  // in its place
  };
  const Case cases[] = {
      {{"rename", file, "Quote", "Citation"}, "\"Quote\"", "text:style-name=\"Citation\""},
      {{"merge", file, "Quote", "Unused", "Body"}, "Quote", "text:style-name=\"Body\""},
      {{"remove", file, "Quote"}, "Quote", "text:style-name=\"Body\""},
      {{"remove", file, "Quote", "--keep-look"}, "Quote", "style:name=\"P3\""},
      {{"reparent", file, "Quote", "Unused", "--keep-look"},
       "\"Quote\" style:family=\"paragraph\" style:parent-style-name=\"Body\"",
       "<style:text-properties fo:font-size=\"10pt\"/></style:style>\n"},
      {{"dedupe", file}, "P2", "<text:p text:style-name=\"P1\"/><text:p text:style-name=\"P1\"/>"},
      {{"cleanup", file}, "Unused", "Quote"},
      {{"set", file, "Body", "text.fo.font-size=11pt"}, "10pt", "11pt"},
  };
  for (Case item : cases) {
    SCOPED_TRACE(item.arguments.front());
    std::vector<std::string> dry = item.arguments;
    dry.emplace_back("--dry-run");
    EXPECT_THAT(runTool(dry).out, testing::HasSubstr(file + ":"));
    EXPECT_EQ(contentOf(file), letter());
    item.arguments.insert(item.arguments.end(), {"-o", out});
    const ToolRun run = runTool(item.arguments);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(contentOf(out), testing::Not(testing::HasSubstr(item.gone)));
    EXPECT_THAT(contentOf(out), testing::HasSubstr(item.there));
  }
  for (const auto& [arguments, error] : std::initializer_list<std::pair<std::vector<std::string>, std::string>>{
           {{"rename", file, "Quote", "Body", "-o", out}, "already"},
           {{"rename", file, "Nobody", "X", "-o", out}, "no style 'Nobody'"},
           {{"cleanup", file, "-o", file}, "--in-place"},
           {{"merge", file, "P1", "Nobody", "-o", out}, "no style 'Nobody'"},
           {{"remove", file, "Body", "-o", folder.write("text.txt", "Dear")}, "--force"}}) {
    const ToolRun run = runTool(arguments);
    EXPECT_EQ(run.code, 2) << error;
    EXPECT_THAT(run.err, testing::HasSubstr(error));
  }
  EXPECT_EQ(contentOf(file), letter());
}

TEST(EditCommandsTest, AScriptIsMadeAsAWholeOrNotAtAll) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string good = folder.write("good.edits",
                                        "# house style\nset Body text.fo.font-size=11pt\n\n"
                                        "rename Quote \"My \"\"own\"\" quote\"  # a remark\ndedupe\ncleanup P1\n");
  EXPECT_EQ(runTool({"edit", file, good, "--in-place", "--backup", ".old"}).code, 0);
  const std::string after = contentOf(file);
  EXPECT_THAT(after, testing::HasSubstr("style:display-name=\"My &quot;own&quot; quote\""));
  EXPECT_THAT(after, testing::Not(testing::HasSubstr("Unused")));
  EXPECT_EQ(contentOf(file + ".old"), letter());
  const ToolRun bad =
      runTool({"edit", file, folder.write("bad.edits", "dedupe\nset Body text.fo.color=#ff0000\nremove Nobody\n"),
               "--in-place"});
  EXPECT_EQ(bad.code, 2);
  EXPECT_THAT(bad.err, testing::HasSubstr("line 3: there is no style 'Nobody'"));
  EXPECT_EQ(contentOf(file), after);
  EXPECT_THAT(runTool({"edit", file, folder.write("open.edits", "\n\"set\n"), "--in-place"}).err,
              testing::HasSubstr("line 2: a quote"));
}

}  // namespace
