// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <tests/Files.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace zt::test {

TEST(ArchiveCommandsTest, ArchivesThatMakeNoSenseEndInOneErrorOrInFindings) {
  const TemporaryFolder folder;
  const std::string open = "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='2'>\n";
  const struct {
    const char* name;
    std::string bytes;
    int code;
    const char* told;
  } cases[] = {
      {"cut", open + "<zt:document>", 3, ":2: this is no good XML"},
      {"empty", open + "<zt:document/></zt:archive>", 3, ":2: expected a stylesheet in the document, found none"},
      {"class", open + "<zt:document zt:class='ParagraphStyle'/></zt:archive>", 3,
       "expected an element 'property-map'"},
      {"value",
       open + "<zt:stylesheet><zt:styles><zt:paragraph-style zt:ident='paragraph:A' zt:origin='nowhere' "
              "zt:uses='99999999999'><zt:property-map>"
              "<zt:text.fo.font-size><zt:color>#000000</zt:color></zt:text.fo.font-size>\n<zt:x><zt:length>1 "
              "mile</zt:length></zt:x>"
              "<zt:paragraph.style.list-style-name><zt:string>L</zt:string></zt:paragraph.style.list-style-name>"
              "</zt:property-map></zt:paragraph-style></zt:styles><zt:anon-styles/></zt:stylesheet></zt:archive>",
       1, ""},
  };
  for (const auto& each : cases) {
    const std::string path = folder.write(each.name, each.bytes);
    for (const char* command : {"tree", "normalize"}) {
      const ToolRun run = runTool({command, path});
      EXPECT_EQ(run.code, each.code) << each.name << run.err;
      EXPECT_THAT(run.err, ::testing::HasSubstr(each.told)) << each.name;
      EXPECT_THAT(run.err, ::testing::HasSubstr(path));
      if (each.code == 3) {
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
      }
    }
  }
}

TEST(ArchiveCommandsTest, TheToolConvertsNormalizesAndCompares) {
  const TemporaryFolder folder;
  const std::string original =
      flat(paragraphStyle("A",
                          "><style:paragraph-properties fo:line-height=\"110%\" fo:margin-left=\"0.5cm\"/>"
                          "<style:text-properties fo:font-size=\"33.3333%\"/></style:style>") +
               paragraphStyle("B",
                              " style:parent-style-name=\"A\"><style:text-properties fo:font-size=\"50%\"/>"
                              "</style:style>"),
           paragraphStyle("P1", " style:parent-style-name=\"B\"/>"), "<text:p text:style-name=\"P1\">x</text:p>");
  const std::string one = folder.write("one.fodt", original);
  std::string changed = original;
  changed.replace(changed.find("0.5cm"), 5, "0.7cm");
  changed.replace(changed.find("style:name=\"B\""), 14, "style:name=\"C\"");
  const std::string two = folder.write("two.fodt", changed);
  const std::string archive = (folder / "one.zts.gz").string();
  EXPECT_EQ(runTool({"convert", one, archive}).code, 0);
  EXPECT_EQ(contentOf(archive).substr(0, 2), "\x1f\x8b");
  EXPECT_EQ(runTool({"diff", one, archive}).code, 0);
  const ToolRun diff = runTool({"diff", archive, two});
  EXPECT_EQ(diff.code, 1);
  EXPECT_THAT(
      diff.out,
      ::testing::StartsWith(
          "- paragraph:B\n+ paragraph:C\n~ paragraph:A\n    paragraph.fo.margin-left: length 0.5cm -> length 0.7cm\n"));
  const auto json = runTool({"diff", "--json", archive, two}).json();
  EXPECT_EQ(json["added"][0], "paragraph:C");
  EXPECT_EQ(json["changed"][0]["changes"][0]["what"], "paragraph.fo.margin-left");
  EXPECT_EQ(runTool({"normalize", one}).out, runTool({"normalize", archive}).out);
  EXPECT_THAT(runTool({"explain", archive, "P1", "text.fo.font-size"}).out,
              ::testing::StartsWith("text.fo.font-size of flat:paragraph:P1 is 16.6667%\n"));
  EXPECT_EQ(runTool({"convert", "--format", "1", archive, (folder / "old.zts").string()}).code, 0);
  EXPECT_THAT(contentOf(folder / "old.zts"), ::testing::HasSubstr("<zt:real>1.1</zt:real>"));
  EXPECT_EQ(runTool({"convert", one, folder.write("dir/x", "") + "/no"}).code, 3);
  EXPECT_EQ(runTool({"stats", archive}).code, 0);
}

}  // namespace zt::test
