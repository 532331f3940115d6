// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>

#include <document/styles/StyleValues.h>
#include <gmock/gmock.h>
#include <insight/difference/DocumentDiff.h>
#include <insight/validation/ModelCheck.h>
#include <platform/ZTFormat.h>
#include <tests/Files.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>
#include <tool/Formats.h>

#include <map>
#include <set>

namespace zt::test {

namespace {

/// Everything that is promised about the styles of a document, by their labels.
std::map<std::string, std::string> factsOf(const ZTDocument& document) {
  std::map<std::string, std::string> all;
  const auto note = [&](const ZTSStyle& style) {
    std::string text =
        format("%@|%@|%@|%@|%d|%d|%d|parent %s", style.classObject().name(), style.name(), style.identifier(),
               style.parentIdentifier(), style.isLocked(), style.usageCount(), document.placeOf(style).line,
               style.parent() != nullptr ? document.labelOf(*style.parent()) : "none");
    std::set<std::string> values;
    if (const Ref<PropertyMap> map = style.propertyMap()) {
      for (const PropertyMap::Entry& entry : *map) {
        const Ref<NSObject> value = style.valueForProperty(entry.key);
        const ZTSStyle* reference = asStyle(value.get());
        values.insert(format("\n  %@ = %s %s%s", entry.key, valueKind(value.get()),
                             reference != nullptr ? document.labelOf(*reference) : valueText(value.get()),
                             style.overridesProperty(entry.key) ? " own" : ""));
      }
    }
    for (const std::string& value : values) text += value;
    all[document.labelOf(style)] += text;
  };
  for (const Ref<OdfStyle>& style : document.readStyles()) {
    if (style->stylesheet() != nullptr) note(*style);
  }
  for (const ZTSStyle* style : document.stylesheet().identifiedStyles().allObjects()) note(*style);
  return all;
}

const std::string kOdd = flat(
    paragraphStyle(
        "A",
        " style:display-name=\"A &amp; B\"><style:paragraph-properties fo:line-height=\"110%\" fo:margin-left=\"0.5cm\""
        " fo:unheard-of=\"x &lt; y\"/><style:text-properties fo:color=\"#0a0b0c\" "
        "fo:font-size=\"33.3333%\"/></style:style>") +
        paragraphStyle("B",
                       " style:parent-style-name=\"A\"><style:text-properties fo:font-size=\"50%\"/></style:style>"),
    paragraphStyle("P1",
                   " style:parent-style-name=\"B\"><style:text-properties fo:font-weight=\"bold\"/></style:style>"),
    "<text:p text:style-name=\"P1\">x</text:p><text:p text:style-name=\"P1\">x</text:p>");

}  // namespace

TEST(DocumentArchiveTest, AConvertedDocumentIsTheSameDocument) {
  const TemporaryFolder folder;
  int documents = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dataPath(""))) {
    if (!entry.is_directory() && entry.path().extension() != ".fodt") continue;
    SCOPED_TRACE(entry.path().filename().string());
    ++documents;
    const Ref<ZTDocument> original = readDocument(entry.path());
    const std::string path = (folder / "a.zts.gz").string();
    saveArchive(*original, path, {.compression = ZTACompression::gzip});
    const Ref<ZTDocument> loaded = readDocument(path);
    EXPECT_TRUE(loaded->findings.empty()) << loaded->findings.front().message;
    const auto wanted = factsOf(*original);
    const auto got = factsOf(*loaded);
    ASSERT_EQ(got.size(), wanted.size());
    for (const auto& [label, text] : wanted) ASSERT_EQ(got.at(label), text) << label;
    EXPECT_TRUE(DocumentDiff(*original, *loaded).isEmpty());
    EXPECT_TRUE(loaded->stylesheet().indexesAreRight());
    EXPECT_EQ(checkModel(*loaded).size(), checkModel(*original).size());
    const std::string normal = archiveBytes(*original, {.isDiffable = true});
    const std::string again = archiveBytes(*readArchiveBytes(normal, "n", true), {.isDiffable = true});
    EXPECT_TRUE(again == normal);
  }
  EXPECT_EQ(documents, 9);
}

TEST(DocumentArchiveTest, BothVersionsAreStoredAndReadAlike) {
  const TemporaryFolder folder;
  const Ref<ZTDocument> document = readDocument(folder.write("odd.fodt", kOdd));
  const std::string before = archiveBytes(*document);
  expectStored(before, "document-v2.xml");
  expectStored(archiveBytes(*document, {.version = 1}), "document-v1.xml");
  EXPECT_EQ(archiveBytes(*document), before) << "writing version 1 left the document as it was";

  const auto stored = std::filesystem::path(ZT_TEST_DATA_DIR) / "archives";
  const Ref<ZTDocument> old = readArchive(stored / "document-v1.xml");
  const Ref<ZTDocument> now = readArchive(stored / "document-v2.xml");
  EXPECT_TRUE(old->findings.empty());
  for (const char* name : {"A", "B"})
    EXPECT_TRUE(old->namedStyle("paragraph", name)->isEqual(now->namedStyle("paragraph", name))) << name;
  EXPECT_EQ(valueText(old->namedStyle("paragraph", "A")->valueForProperty("paragraph.fo.line-height").get()), "110%");
  EXPECT_EQ(archiveBytes(*now), before);
  ASSERT_EQ(now->stylesCalled("P1").size(), 1u);
  EXPECT_EQ(now->stylesCalled("P1")[0]->usageCount(), 2u);
}

TEST(DocumentArchiveTest, ArchivesThatMakeNoSenseEndInOneErrorOrInFindings) {
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

TEST(DocumentArchiveTest, TheToolConvertsNormalizesAndCompares) {
  const TemporaryFolder folder;
  const std::string one = folder.write("one.fodt", kOdd);
  std::string changed = kOdd;
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
