// SPDX-License-Identifier: MIT
#include <insight/validation/ModelCheck.h>

#include <document/archive/DocumentArchive.h>
#include <gmock/gmock.h>
#include <insight/tables/StyleTables.h>
#include <opendocument/OpenDocumentFormat.h>
#include <tests/TestDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

TEST(ModelCheckTest, TellsTheStyleAndTheFilesLineOfEachFinding) {
  const TemporaryFolder folder;
  const Ref<ZTDocument> document = openDocumentFormat().read(folder.write("good.fodt", flat(paragraphStyle("A"))));
  EXPECT_TRUE(checkModel(*document).empty());
  document->namedStyle("paragraph", "A")->p_setParentIdentifier("nowhere");
  std::vector<std::string> texts;
  for (const Finding& finding : checkModel(*document)) {
    const std::string file = std::filesystem::path(finding.place.file).filename().string();
    texts.push_back(file + ':' + std::to_string(finding.place.line) + ' ' + finding.style + ": " + finding.message);
  }
  EXPECT_THAT(texts, testing::ElementsAre(
                         "good.fodt:0 paragraph: Style's identifier does not match parent identifier of child!",
                         "good.fodt:0 paragraph: Style not reachable from child's stylesheet!",
                         "good.fodt:2 paragraph:A: Style's parent identifier does not match identifier of "
                         "parent!",
                         "good.fodt:2 paragraph:A: Style's parent is not reachable from style's stylesheet!"));
}

TEST(ModelCheckTest, StylesheetsAboveTheDefaultsAreCheckedAndShownToo) {
  const std::string styles =
      "<zt:anon-styles><zt:paragraph-style><zt:property-map/></zt:paragraph-style></zt:anon-styles>";
  const Ref<ZTDocument> document = readArchiveBytes(
      "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='2'><zt:stylesheet>" + styles + "<zt:parent>" + styles +
          "<zt:parent>" + styles + "</zt:parent></zt:parent></zt:stylesheet></zt:archive>",
      "f");
  EXPECT_EQ(tablesOfStylesheets(document).size(), 6u);
  document->defaults().parent()->anonymousStyles().anyObject()->p_setIdentifier("x");
  ASSERT_EQ(checkModel(*document).size(), 2u);
  EXPECT_EQ(checkModel(*document)[0].message, "Identified style missing from mIdentifiedStyles.");
}

}  // namespace
