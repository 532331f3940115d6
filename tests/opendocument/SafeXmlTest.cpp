// SPDX-License-Identifier: MIT
#include <document/xml/SafeXml.h>

#include <opendocument/reading/RawDocument.h>

#include <tests/TestDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

RawDocument readText(const std::string& text) { return RawDocument::read(Package::fromFlatText(text, "x.fodt")); }

// The styles that were read and what was found, or the error.
std::string outcome(const std::string& text) {
  try {
    const RawDocument document = readText(text);
    std::string result;
    for (const RawStyle& style : document.styles) result += style.name + ' ';
    for (const Finding& finding : document.findings)
      result += '[' + finding.place.text() + ": " + finding.message + ']';
    return result;
  } catch (const ReadError& error) {
    return std::string("! ") + error.what();
  }
}

std::string utf16(const std::string& ascii, bool isBigEndian) {
  std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char byte : ascii) bytes.append(isBigEndian ? std::string{'\0', byte} : std::string{byte, '\0'});
  return bytes;
}

const std::string kA = paragraphStyle("A");

TEST(SafeXmlTest, BadTextGivesOneClearErrorAndKeepsWhatStandsBefore) {
  const std::string good = flat(kA);
  std::string invalid = flat(paragraphStyle("A\xFF\xC0\xAFz"));
  std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?>" + flat(paragraphStyle("\xE4"));
  struct Case {
    std::string text;
    std::string expected;  // the start of the outcome
  };
  const Case cases[] = {
      {good, "A "},
      {"\xEF\xBB\xBF" + good, "A "},
      {utf16("<?xml version='1.0' encoding='UTF-16'?>" + good, true), "A "},
      {utf16(good, false), "A "},
      {latin, "\xC3\xA4 "},
      {invalid, "A\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz [x.fodt:2: 3 bytes are no text; replaced by U+FFFD]"},
      {flat(kA + std::string(1, '\0')), "A [x.fodt:3: 1 byte is no text; replaced by U+FFFD]"},
      {"", "! x.fodt: empty"},
      {"no xml at all", "! x.fodt:1: "},
      {good.substr(0, good.find("</office:styles>")), "A [x.fodt:3: "},
      {flat(kA + "<open>" + paragraphStyle("B")), "A [x.fodt:"},
      {"<html/>", "! x.fodt:1: the root element is none:html, expected office:document"},
      {document("document-content", kA), "! x.fodt:1: the root element is office:document-content"},
      {"<?xml version='1.0' encoding='UTF-7'?>" + good, "! x.fodt:1: written in the encoding 'utf-7'"},
      {std::string("<\0\0\0?\0\0\0", 8), "! x.fodt:1: written in an encoding"},
      {"<!DOCTYPE office:document PUBLIC 'x' 'file:///etc/passwd'>" + good, "A "},
      {"<!DOCTYPE d [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;&a;'>]>" + good,
       "! x.fodt:1: a document type with declarations"},
      {"<!DOCTYPE d [<!ENTITY a SYSTEM 'file:///etc/passwd'>]>" + good,
       "! x.fodt:1: a document type with declarations"},
      {"<!-- <!DOCTYPE d [ --><!DOCTYPE d SYSTEM '[' [<!ENTITY % p 'x'>%p;]>" + good, "! x.fodt:1: a document type"},
      {flat(paragraphStyle("A", " x:y=\"1\"/>")), "A "},
      {flat(kA, "", "&undeclared;"), "A [x.fodt:3: Entity 'undeclared' not defined; kept what stands before]"},
  };
  for (const Case& item : cases) EXPECT_EQ(outcome(item.text).substr(0, item.expected.size()), item.expected);
}

std::string repeated(std::size_t count, const std::string& text) {
  std::string all;
  all.reserve(count * text.size());
  for (std::size_t index = 0; index < count; ++index) all += text;
  return all;
}

TEST(SafeXmlTest, WhatIsDeepOrLargeIsReadOrRefused) {
  const auto nested = [](std::size_t depth, const std::string& tag) {
    return flat(kA, "", repeated(depth, "<text:" + tag + ">") + repeated(depth, "</text:" + tag + ">"));
  };
  EXPECT_EQ(outcome(nested(100'000, "section")), "A ");
  EXPECT_EQ(outcome(flat(kA, "", repeated(100'000, "<open>"))).substr(0, 3), "A [");
  EXPECT_EQ(outcome(flat("<style:style style:name=\"D\">" + repeated(100'000, "<a>") + repeated(100'000, "</a>") +
                         "</style:style>")),
            "D ");
  struct : XmlHandler {
    void startElement(const XmlElement&) override { ++count; }
    void endElement() override {}
    int count = 0;
  } counter;
  std::vector<Finding> findings;
  XmlLimits shallow;
  shallow.depth = 20;
  EXPECT_THROW(readXml({"flat", "x.fodt", nested(30, "p")}, counter, findings, shallow), ReadError);
  EXPECT_EQ(counter.count, 20 + 3);  // the style section is closed by then
  EXPECT_THAT(outcome(flat(kA, "", repeated(20'000, "<a xmlns:n='u'>"))),
              testing::HasSubstr("namespace declarations in force"));

  const auto attributes = [](std::size_t count) {
    std::string tag = "<text:p";
    for (std::size_t index = 0; index < count; ++index) tag += " a" + std::to_string(index) + "=''";
    return flat(kA, "", tag + "/>");
  };
  EXPECT_EQ(outcome(attributes(900)), "A ");
  EXPECT_THAT(outcome(attributes(300'000)), testing::HasSubstr("x.fodt:3: a tag with more than 1000 attributes"));

  const std::string huge(std::size_t{20} << 20, 'n');
  EXPECT_EQ(readText(flat(paragraphStyle(huge))).styles.at(0).name.size(), huge.size());

  EXPECT_THAT(outcome(flat(kA) + std::string(2'000'000, '\x01')), testing::StartsWith("A [x.fodt:"));
}

TEST(SafeXmlTest, NamesAreTakenByNamespaceNeverByPrefix) {
  const std::string text =
      "<o:document xmlns:o='urn:oasis:names:tc:opendocument:xmlns:office:1.0' "
      "xmlns='urn:oasis:names:tc:opendocument:xmlns:style:1.0'"
      " xmlns:s='urn:oasis:names:tc:opendocument:xmlns:style:1.0' xmlns:fo='http://example.com/mine/'"
      " xmlns:x='http://www.w3.org/1999/XSL/Format' xmlns:y='http://www.w3.org/2000/svg'><o:styles>"
      "<style s:name='A' s:family='paragraph'><text-properties x:color='#000000' fo:color='mine' y:width='1cm'>"
      "<tab-stops>\n <x:tab  a='&lt;&quot;'>t&amp;</x:tab>\n</tab-stops></text-properties><map "
      "s:condition='c'/></style></o:styles></o:document>";
  const RawDocument document = readText(text);
  ASSERT_EQ(document.styles.size(), 1u);
  std::vector<std::string> entries;
  for (const RawProperty& entry : document.styles[0].properties)
    entries.push_back(entry.group + ' ' + entry.qualifiedName() + ' ' + entry.value);
  EXPECT_THAT(
      entries,
      testing::ElementsAre(
          "text fo:color #000000", "text x-http-example-com-mine:color mine", "text svg:width 1cm",
          "text style:tab-stops <style:tab-stops><fo:tab none:a=\"&lt;&quot;\">t&amp;</fo:tab></style:tab-stops>"));
  EXPECT_EQ(document.styles[0].children.at(0).text, "<style:map style:condition=\"c\"/>");
}

}  // namespace
