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

TEST(EditCommandsTest, LooksGetANameAndLoseIt) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string out = (folder / "out.fodt").string();
  // Both automatic styles say nothing of their own; the first becomes the named one, in the place of named styles.
  EXPECT_EQ(runTool({"promote", file, "P1", "Fine print", "-o", out}).code, 0);
  EXPECT_THAT(contentOf(out), testing::HasSubstr("style:display-name=\"Fine print\" style:family=\"paragraph\" "
                                                 "style:parent-style-name=\"Body\"/></office:styles>"));
  EXPECT_THAT(contentOf(out), testing::HasSubstr("<text:p text:style-name=\"Fine_20_print\"/><text:p "
                                                 "text:style-name=\"Fine_20_print\"/>"));
  EXPECT_THAT(contentOf(out), testing::Not(testing::AnyOf(testing::HasSubstr("P1"), testing::HasSubstr("P2"))));
  const std::string back = (folder / "back.fodt").string();
  EXPECT_EQ(runTool({"demote", out, "Fine print", "-o", back}).code, 0);
  EXPECT_THAT(contentOf(back), testing::Not(testing::HasSubstr("Fine")));
  EXPECT_THAT(contentOf(back), testing::HasSubstr("style:name=\"P1\" style:family=\"paragraph\" "
                                                  "style:parent-style-name=\"Body\"/></office:automatic-styles>"));
  for (const std::vector<std::string>& words : std::initializer_list<std::vector<std::string>>{
           {"promote", file, "Quote", "X"}, {"promote", file, "P1", "Quote"}, {"demote", file, "P1"}})
    EXPECT_EQ(runTool(words).code, 2) << words.front();
}

TEST(EditCommandsTest, WhatInheritsKeepsItsLookWhereItIsAsked) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string out = (folder / "out.fodt").string();
  EXPECT_EQ(runTool({"set", file, "Body", "text.fo.font-size=20pt", "--keep-look", "-o", out}).code, 0);
  for (const char* style : {"Quote", "flat:paragraph:P1"}) {
    const auto explained = runTool({"explain", "--json", out, style}).json();
    EXPECT_EQ(explained["styles"][0]["values"]["text.fo.font-size"], "10pt") << style;
  }
}

// A list with a bullet of its own, a style that uses it, one that inherits from a style that the letter lacks.
std::string house() {
  return flat(
      "<style:style style:name=\"Sign\" style:family=\"text\"/>"
      "<text:list-style style:name=\"Dashes\"><text:list-level-style-bullet text:level=\"1\" text:style-name=\"Sign\" "
      "text:bullet-char=\"-\"><style:list-level-properties text:space-before=\"1cm\"/></text:list-level-style-bullet>"
      "</text:list-style>" +
      paragraphStyle("Base", "><style:text-properties fo:color=\"#ff0000\"/></style:style>") +
      paragraphStyle("Body", " style:parent-style-name=\"Base\" style:list-style-name=\"Dashes\"/>") +
      paragraphStyle("Extra"));
}

TEST(EditCommandsTest, StylesOfATemplateTakeThePlaceOfThoseOfTheSameName) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string from = folder.write("house.fodt", house());
  const std::string out = (folder / "out.fodt").string();
  const ToolRun run = runTool({"apply", file, "--from", from, "-o", out});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.out, testing::HasSubstr("text.fo.color (none) -> #ff0000"));
  const std::string text = contentOf(out);
  EXPECT_THAT(text, testing::HasSubstr("<style:style style:name=\"Body\" style:family=\"paragraph\" "
                                       "style:parent-style-name=\"Base\" style:list-style-name=\"Dashes\">"));
  EXPECT_THAT(text, testing::HasSubstr("<text:list-style style:name=\"Dashes\"><text:list-level-style-bullet "
                                       "text:level=\"1\""));
  EXPECT_THAT(text, testing::HasSubstr("\"Unused\""));
  EXPECT_THAT(text, testing::Not(testing::HasSubstr("Extra")));
  EXPECT_EQ(runTool({"apply", out, "--from", from}).out, "nothing would change\n");
  const std::string all = (folder / "all.fodt").string();
  EXPECT_EQ(runTool({"apply", file, "--from", from, "--add", "--remove-others", "-o", all}).code, 0);
  EXPECT_THAT(contentOf(all), testing::HasSubstr("\"Extra\""));
  EXPECT_THAT(contentOf(all), testing::Not(testing::AnyOf(testing::HasSubstr("Unused"), testing::HasSubstr("Quote"))));
  EXPECT_THAT(runTool({"apply", file, "--from", from, "--only", "Nobody"}).err,
              testing::HasSubstr("no style 'Nobody'"));
}

TEST(EditCommandsTest, ListsBecomeOneOnlyOnRequestAndOnlyWhereNoneIsContinued) {
  const auto list = [](const std::string& name) {
    return "<text:list-style style:name=\"" + name +
           "\"><text:list-level-style-number text:level=\"1\" style:num-format=\"1\"/></text:list-style>";
  };
  const auto text = [](const std::string& second) {
    return "<text:list text:style-name=\"L1\"/><text:list text:style-name=\"L2\"" + second + "/>";
  };
  const TemporaryFolder folder;
  const std::string apart = folder.write("apart.fodt", flat({}, list("L1") + list("L2"), text({})));
  const std::string continued =
      folder.write("continued.fodt", flat({}, list("L1") + list("L2"), text(" text:continue-numbering=\"true\"")));
  EXPECT_THAT(runTool({"dedupe", apart, "--dry-run"}).out, testing::HasSubstr("0 automatic styles"));
  EXPECT_THAT(runTool({"dedupe", apart, "--lists", "--dry-run"}).out, testing::HasSubstr("1 automatic styles"));
  EXPECT_THAT(runTool({"dedupe", continued, "--lists", "--dry-run"}).out, testing::HasSubstr("0 automatic styles"));
}

TEST(EditCommandsTest, NoArchiveTakesThePlaceOfALetter) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string named = folder.write("letter.zts", letter());
  for (const std::vector<std::string>& words :
       std::initializer_list<std::vector<std::string>>{{"convert", file, file},
                                                       {"normalize", file, "--out", file},
                                                       {"cleanup", file, "-o", named},
                                                       {"dedupe", file, "-o", named},
                                                       {"cleanup", file, "-o", file}}) {
    EXPECT_EQ(runTool(words).code, 2) << words.front();
    EXPECT_EQ(contentOf(file), letter());
    EXPECT_EQ(contentOf(named), letter());
  }
  EXPECT_NE(runTool({"cleanup", file, "-o", named, "--force"}).code, 2);
  EXPECT_THAT(contentOf(named), testing::HasSubstr("zt:archive"));
  const std::string cut = folder.write("cut.fodt", letter().substr(0, letter().size() / 2));
  EXPECT_EQ(runTool({"convert", cut, (folder / "cut.zts").string()}).code, 3);
}

}  // namespace
