// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>

#include <document/styles/StyleValues.h>
#include <gmock/gmock.h>
#include <insight/difference/DocumentDiff.h>
#include <insight/validation/ModelCheck.h>
#include <opendocument/OpenDocumentFormat.h>
#include <platform/ZTFormat.h>
#include <tests/Files.h>
#include <tests/TestDocuments.h>

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
    const Ref<ZTDocument> original = openDocumentFormat().read(entry.path());
    const std::string path = (folder / "a.zts.gz").string();
    saveArchive(*original, path, {.compression = ZTACompression::gzip});
    const Ref<ZTDocument> loaded = readArchive(path);
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
  const Ref<ZTDocument> document = openDocumentFormat().read(folder.write("odd.fodt", kOdd));
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

}  // namespace zt::test
