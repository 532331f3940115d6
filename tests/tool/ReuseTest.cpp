// SPDX-License-Identifier: MIT
#include <tool/Tool.h>

#include <document/editing/LookImage.h>
#include <document/styles/StyleValues.h>
#include <gmock/gmock.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>
#include <tool/Formats.h>

#include <map>

namespace {

using namespace zt::test;

// Three automatic styles, two of them alike and one that says what its parent says; one named style that nobody uses.
std::string letter() {
  const auto automatic = [](const std::string& name, const std::string& size, const std::string& parent = "Body") {
    return paragraphStyle(name, " style:parent-style-name=\"" + parent + "\"><style:text-properties fo:font-size=\"" +
                                    size + "\"/></style:style>");
  };
  return flat(paragraphStyle("Body", "><style:text-properties fo:font-size=\"10pt\"/></style:style>") +
                  paragraphStyle("Unused") + paragraphStyle("Above") +
                  paragraphStyle("Below", " style:parent-style-name=\"Above\"/>"),
              automatic("P1", "12pt") + automatic("P2", "12.0pt") + automatic("P3", "10pt") + automatic("P4", "120%") +
                  automatic("P5", "9pt", "Unused"),
              "<text:p text:style-name=\"P1\"/><text:p text:style-name=\"P2\"/><text:p text:style-name=\"P3\"/>"
              "<text:p text:style-name=\"P4\"/><text:p text:style-name=\"Below\"/>");
}

/// Every effective value that text shows, whatever the style is called and based on.
std::string lookOf(const zt::ZTSStyle& style) {
  nlohmann::json look{{"class", style.classObject().name().text()}};
  const zt::Ref<zt::PropertyMap> all = style.propertyMap();
  for (zt::PropertyKey key : all ? all->keySet()->keys() : std::vector<zt::PropertyKey>()) {
    const zt::Ref<zt::NSObject> value = style.valueForProperty(key);
    if (key.view().starts_with("style.") && !zt::isLook(key)) continue;
    if (const zt::ZTSStyle* reference = zt::asStyle(value.get()))
      look[key.string().text()] = reference->isIdentified() ? reference->identifier().text() : lookOf(*reference);
    else if (value)
      look[key.string().text()] = zt::valueText(value.get());
  }
  return look.dump();
}

/// How often the text uses each look.
std::map<std::string, std::size_t> looksInUse(const std::string& file) {
  std::map<std::string, std::size_t> uses;
  const zt::Ref<zt::ZTDocument> document = zt::readDocument(file);
  for (const auto& style : document->readStyles())
    if (const std::size_t count = document->originOf(*style)->uses; count != 0) uses[lookOf(*style)] += count;
  return uses;
}

TEST(ReuseTest, DedupeFindsWhatIsAlikeAndLosesNoLook) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const auto json = runTool({"dedupe", "--json", file}).json();
  EXPECT_EQ(json["total"].dump(), R"({"before":5,"different":0,"found":2,"made":3})");
  EXPECT_EQ(json["styles"][1]["answer"], "flat:paragraph:P1");
  EXPECT_EQ(json["styles"][2]["answer"], "paragraph:Body");
  EXPECT_EQ(json["styles"][3]["made"], true);  // a share of the parent's size is never the parent's size
  EXPECT_THAT(runTool({"dedupe", "--list", file}).out, testing::HasSubstr("flat:paragraph:P2  is flat:paragraph:P1\n"));

  // What is written holds what was counted, is sound, looks as before where it is used, and has nothing left to find.
  const std::string baseless =
      folder.write("baseless.zts",
                   "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='2'><zt:stylesheet><zt:styles/>"
                   "<zt:anon-styles><zt:paragraph-style zt:origin='automatic' zt:uses='2'><zt:property-map/>"
                   "</zt:paragraph-style></zt:anon-styles></zt:stylesheet></zt:archive>");
  const std::string large = dataPath("09-large-api-reference").string();
  const std::string written = (folder / "out.zts.gz").string();
  for (const std::string& each : {file, baseless, dataPath("05-medium-markup-writer").string(), large}) {
    SCOPED_TRACE(each);
    const auto total = runTool({"dedupe", "--json", "-o", written, each}).json()["total"];
    EXPECT_EQ(total["different"], 0);
    if (each == large) {
      EXPECT_EQ(total["before"], 5219);
      EXPECT_LT(total["made"], 200);
    }
    EXPECT_EQ(runTool({"validate", written}).code, 0);
    EXPECT_EQ(looksInUse(written), looksInUse(each));
    const auto again = runTool({"dedupe", "--json", written}).json()["total"];
    EXPECT_EQ(again["before"], total["made"]) << again;
    EXPECT_EQ(again["found"], 0) << again;
  }
}

TEST(ReuseTest, CleanupListsWhatNothingUses) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  const std::string written = (folder / "out.zts").string();
  const auto json = runTool({"cleanup", "--json", file, "-o", written}).json();
  std::vector<std::string> removed;
  for (const auto& style : json["removed"]) removed.push_back(style["style"]);
  EXPECT_THAT(removed, testing::ElementsAre("paragraph:Unused", "flat:paragraph:P5"));  // Above has a used child
  EXPECT_EQ(json["left"].get<int>() + 2, json["before"].get<int>());
  EXPECT_EQ(runTool({"cleanup", "--keep-named", "--json", file}).json()["removed"].size(), 1u);
  EXPECT_EQ(runTool({"validate", written}).code, 0);
  EXPECT_EQ(looksInUse(written), looksInUse(file));
  const auto again = runTool({"cleanup", "--json", written}).json();
  EXPECT_EQ(again["before"], json["left"]) << again;
  EXPECT_TRUE(again["removed"].empty()) << again;
  EXPECT_EQ(runTool({"cleanup", file, "-o", (folder / "no/where").string()}).code, 3);
}

TEST(ReuseTest, VaryTellsWhichCandidateAnswersAndWhy) {
  const TemporaryFolder folder;
  const std::string file = folder.write("letter.fodt", letter());
  struct Case {
    std::vector<std::string> arguments;
    int code;
    std::string said;
  };
  const std::string size = "text.fo.font-size";
  const Case cases[] = {
      {{"Body", size + "=12pt"},
       0,
       "+ children of the base flat:paragraph:P1: number 1 of 4 has exactly the wanted values\nfound: "
       "flat:paragraph:P1\n"},
      {{"P1", size + "=10pt"}, 0, "found: paragraph:Body\n"},
      {{"P1"}, 0, "+ style itself flat:paragraph:P1: "},
      {{"Body", size + "=13pt"},
       0,
       "- children of the base: none of 4 has exactly the wanted values\nmade: a new style, based on paragraph:Body\n"},
      {{"Body", size + "=12pt", "--locked"}, 0, "made: "},
      {{"Body", size + "=12pt", "--no-reuse"}, 0, "made: "},
      {{"Body", size + "=blue"}, 2, "'blue' is no value for 'text.fo.font-size'"},
      {{"Body", "size=1"}, 2, "have no property 'size'"},
      {{"Body", "size"}, 2, "is not of the form PROPERTY=VALUE"},
      {{"Nobody", size + "=1pt"}, 2, "has no style 'Nobody'"},
  };
  for (const Case& each : cases) {
    std::vector<std::string> arguments{"vary", file};
    arguments.insert(arguments.end(), each.arguments.begin(), each.arguments.end());
    const ToolRun run = runTool(arguments);
    EXPECT_EQ(run.code, each.code);
    EXPECT_THAT(run.out + run.err, testing::HasSubstr(each.said));
  }
  const auto json = runTool({"vary", file, "Body", size + "=12pt", "--json"}).json();
  EXPECT_EQ(json["answer"], "flat:paragraph:P1");
  EXPECT_EQ(json["wanted"].size(), 1u);
}

}  // namespace
