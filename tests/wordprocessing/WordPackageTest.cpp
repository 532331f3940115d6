// SPDX-License-Identifier: MIT
#include <wordprocessing/WordFormat.h>
#include <wordprocessing/package/WordPackage.h>

#include <document/xml/SafeXml.h>

#include <tests/wordprocessing/WordDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;
using Entries = std::vector<std::pair<std::string, std::string>>;

// The parts that were read and what was said, or the message of the error.
std::string outcome(const Entries& entries, const PackageLimits& limits = {}) {
  const TemporaryFolder folder;
  try {
    const WordPackage package = WordPackage::read(folder.zip("x.docx", entries), limits);
    std::string text;
    for (const WordPackage::Part& part : package.parts) text += part.xml.name + ' ';
    for (const Finding& finding : package.findings) text += '[' + finding.message + ']';
    return text;
  } catch (const ReadError& error) {
    return error.message();
  }
}

Entries without(Entries entries, const std::string& name) {
  std::erase_if(entries, [&](const auto& entry) { return entry.first == name; });
  return entries;
}

TEST(WordPackageTest, ReadsThePartsThatRelationshipsLeadTo) {
  Entries entries = wordEntries({});
  EXPECT_EQ(outcome(entries), "word/styles.xml word/numbering.xml word/theme.xml word/settings.xml word/document.xml ");
  for (auto& [name, bytes] : entries) {
    if (name == "_rels/.rels") bytes = relationships({{"officeDocument", "/other/main.xml"}});
    if (name == "word/document.xml") name = "other/main.xml";
    if (name == "word/_rels/document.xml.rels") {
      name = "other/_rels/main.xml.rels";
      bytes = relationships({{"styles", "../word/styles.xml"}, {"footer", "../word/styles.xml"}});
    }
  }
  EXPECT_EQ(outcome(entries), "word/styles.xml other/main.xml ");
}

TEST(WordPackageTest, TargetsNeverLeadOutOfThePackage) {
  EXPECT_EQ(resolvedTarget("word/document.xml", "styles.xml"), "word/styles.xml");
  EXPECT_EQ(resolvedTarget("word/document.xml", "../custom/./a.xml"), "custom/a.xml");
  EXPECT_EQ(resolvedTarget("word/document.xml", "/a.xml"), "a.xml");
  EXPECT_EQ(resolvedTarget("word/document.xml", "../../etc/passwd"), "");
  EXPECT_EQ(resolvedTarget("word/document.xml", "file:///etc/passwd"), "");
  Entries entries = without(wordEntries({}), "word/_rels/document.xml.rels");
  entries.emplace_back("word/_rels/document.xml.rels",
                       relationships({{"styles", "../../styles.xml"}, {"numbering", "gone.xml"}}));
  EXPECT_EQ(
      outcome(entries),
      "word/document.xml [the target '../../styles.xml' leads out of the package; left out][a relationship leads to "
      "this part, which is not there]");
}

TEST(WordPackageTest, WhatIsMissingOrTooLargeIsToldOnce) {
  EXPECT_EQ(outcome(without(wordEntries({}), "_rels/.rels")),
            "word/styles.xml word/numbering.xml word/theme.xml word/settings.xml word/document.xml [no relationship "
            "leads to the main part; "
            "word/document.xml is taken]");
  EXPECT_EQ(outcome(without(wordEntries({}), "word/document.xml")), "holds no main part (word/document.xml)");
  EXPECT_EQ(outcome(wordEntries({.styles = std::string(5000, ' ')}), {.partBytes = 1000}),
            "word/numbering.xml word/theme.xml word/settings.xml word/document.xml [inflates to more than 1000 bytes; "
            "refused; left out]");
}

TEST(WordPackageTest, PartsThatAreSaidToBeSomethingElseAreToldAndGlossariesWithStylesLeftAlone) {
  Entries entries = without(wordEntries({}), "[Content_Types].xml");
  entries = without(std::move(entries), "word/_rels/document.xml.rels");
  const std::string types =
      "<Types><Default Extension='xml' ContentType='image/png'/><Override "
      "PartName='/word/document.xml' ContentType='x/main+xml'/></Types>";
  entries.emplace_back("[Content_Types].xml", types);
  entries.emplace_back("word/_rels/document.xml.rels",
                       relationships({{"styles", "styles.xml"}, {"glossaryDocument", "g.xml"}}));
  entries.emplace_back("word/g.xml", "<x/>");
  const std::string told = "[is said to be of the type image/png; read as its relationship says]";
  EXPECT_EQ(outcome(entries), "word/styles.xml word/document.xml word/g.xml " + told + told);
  entries.emplace_back("word/_rels/g.xml.rels", relationships({{"styles", "own.xml"}}));
  EXPECT_EQ(outcome(entries), "word/styles.xml word/document.xml " + told);
}

TEST(WordPackageTest, FormatsAreToldApartByWhatIsInTheFile) {
  const TemporaryFolder folder;
  EXPECT_TRUE(wordFormat().recognises(folder.zip("a.odt", wordEntries({}))));
  EXPECT_FALSE(wordFormat().recognises(folder.zip("b.docx", {{"content.xml", "<a/>"}})));
  EXPECT_FALSE(wordFormat().recognises(folder.write("c.docx", "no package")));
  const std::string encrypted = folder.write("d.docx", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and more");
  ASSERT_TRUE(wordFormat().recognises(encrypted));
  EXPECT_THROW(static_cast<void>(wordFormat().read(encrypted)), ReadError);
}

}  // namespace
