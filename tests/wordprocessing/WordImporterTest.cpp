// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/WordImporter.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <tests/wordprocessing/WordDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

// Findings as "line code style message".
std::vector<std::string> findings(const ZTDocument& document) {
  std::vector<std::string> lines;
  for (const Finding& finding : document.findings) {
    lines.push_back(std::to_string(finding.place.line) + ' ' + finding.code + ' ' + finding.style + ' ' +
                    finding.message);
  }
  return lines;
}

std::string value(const ZTSStyle* style, const std::string& key) {
  if (style == nullptr) return "no style";
  const Ref<NSObject> found = style->valueForProperty(PropertyKey(key));
  if (found == nullptr) return isNull(style->p_valueForProperty(PropertyKey(key))) ? "explicitly none" : "";
  return valueText(found.get(), true);
}

std::string parentOf(const ZTSStyle* style) {
  return style != nullptr && style->parent() != nullptr ? style->parent()->identifier().text() : "none";
}

std::string run(const std::string& properties) { return "<w:r><w:rPr>" + properties + "</w:rPr><w:t>x</w:t></w:r>"; }

std::string paragraph(const std::string& properties, const std::string& content = {}) {
  return "<w:p><w:pPr>" + properties + "</w:pPr>" + content + "</w:p>\n";
}

TEST(WordImporterTest, StylesStandBelowTheirBasesAndThoseBelowTheDefaults) {
  const ImportedWord word = importParts(
      {.styles = "<w:docDefaults><w:rPrDefault><w:rPr><w:sz w:val='22'/></w:rPr></w:rPrDefault><w:pPrDefault><w:pPr>"
                 "<w:jc w:val='both'/></w:pPr></w:pPrDefault></w:docDefaults>" +
                 wordStyle("paragraph", "B", basedOn("A") + "<w:rPr><w:b/></w:rPr>") +  // its base stands further down
                 wordStyle("paragraph", "A", "<w:next w:val='B'/><w:uiPriority w:val='9'/>") +
                 wordStyle("character", "A")});
  EXPECT_THAT(findings(*word.document), testing::IsEmpty());
  const OdfStyle* style = word.document->namedStyle("paragraph", "B");
  EXPECT_EQ(parentOf(style), "paragraph:A");
  EXPECT_EQ(value(style, "text.w.sz"), "11pt");
  EXPECT_EQ(value(style, "paragraph.w.jc"), "both");
  EXPECT_EQ(value(style, "text.w.b"), "true");
  EXPECT_EQ(value(style->parent(), "style.style.next-style-name"), "B");
  EXPECT_EQ(value(style->parent(), "style.w.uiPriority"), "9");
  EXPECT_EQ(value(style, "style.w.uiPriority"), "");
  EXPECT_EQ(value(word.document->namedStyle("text", "A"), "text.w.sz"), "11pt");
}

TEST(WordImporterTest, BasesThatCannotBeGiveWayWithOneFindingEach) {
  const ImportedWord word = importParts(
      {.styles = wordStyle("paragraph", "A", basedOn("C")) + wordStyle("paragraph", "B", basedOn("A")) +
                 wordStyle("paragraph", "C", basedOn("B")) + wordStyle("paragraph", "D", basedOn("T")) +
                 wordStyle("table", "T", basedOn("Gone")) + wordStyle("paragraph", "A", "<w:rPr><w:i/></w:rPr>")});
  EXPECT_THAT(
      findings(*word.document),
      testing::ElementsAre(
          "7 repeated-style paragraph:A an earlier style has this id; kept as 'paragraph:A-2'",
          "5 missing-parent paragraph:D the base 'T' is a style of another kind (table); inherits from the document's "
          "defaults instead",
          "6 missing-parent table:T the base 'Gone' does not exist; inherits from the document's defaults instead",
          "2 parent-loop paragraph:A the base 'C' inherits from this style; inherits from the document's defaults "
          "instead"));
  EXPECT_EQ(parentOf(word.document->namedStyle("paragraph", "C")), "paragraph:B");
  EXPECT_EQ(parentOf(word.document->namedStyle("paragraph", "A")), "paragraph");
  EXPECT_EQ(value(word.document->namedStyle("paragraph", "A"), "text.w.i"), "");
}

TEST(WordImporterTest, ValuesAreExactAndWhatSaysNothingIsNotSet) {
  const ImportedWord word = importParts(
      {.styles = wordStyle("paragraph", "A",
                           "<w:pPr><w:spacing w:before='7' w:line='259'/><w:ind w:start='1in' w:firstLine='5' "
                           "w:hanging='227'/><w:pBdr><w:top w:val='single'/></w:pBdr><w:keepNext w:val='off'/></w:pPr>"
                           "<w:rPr><w:sz w:val='21'/><w:spacing w:val='-3'/><w:u w:val='single'/><w:w w:val='66'/>"
                           "<w:color w:val='FF0000'/><w:rFonts w:ascii='A' w:cs='B' w:cstheme='minorBidi'/></w:rPr>") +
                 wordStyle("paragraph", "B",
                           basedOn("A") + "<w:pPr><w:spacing w:line='300' w:lineRule='exact'/><w:ind w:firstLine='20'/>"
                                          "</w:pPr><w:rPr><w:sz w:val='big'/><w:color w:val='112233' "
                                          "w:themeColor='accent1' w:themeTint='99'/></w:rPr>")});
  EXPECT_THAT(
      findings(*word.document),
      testing::ElementsAre("3 unusable-value paragraph:B the value 'big' of text.w.sz cannot be used; not set"));
  const OdfStyle* a = word.document->namedStyle("paragraph", "A");
  EXPECT_EQ(value(a, "paragraph.w.spacing.before"), "0.35pt");
  EXPECT_EQ(value(a, "paragraph.w.spacing.line"), "107.9167%");
  EXPECT_EQ(value(a, "paragraph.w.spacing.lineRule"), "auto");
  EXPECT_EQ(value(a, "paragraph.w.ind.left"), "72pt");
  EXPECT_EQ(value(a, "paragraph.w.ind.firstLine"), "-11.35pt");
  EXPECT_EQ(value(a, "paragraph.w.pBdr.top"), "<w:top w:val=\"single\"/>");
  EXPECT_EQ(value(a, "paragraph.w.keepNext"), "false");
  EXPECT_EQ(value(a, "text.w.sz"), "10.5pt");
  EXPECT_EQ(value(a, "text.w.spacing"), "-0.15pt");
  EXPECT_EQ(value(a, "text.w.w"), "66%");
  EXPECT_EQ(value(a, "text.w.color"), "#ff0000");
  EXPECT_EQ(value(a, "text.w.rFonts.ascii"), "A");
  EXPECT_EQ(value(a, "text.w.rFonts.cs"), "theme:minorBidi");
  const OdfStyle* b = word.document->namedStyle("paragraph", "B");
  EXPECT_EQ(value(b, "paragraph.w.spacing.line"), "15pt");
  EXPECT_EQ(value(b, "paragraph.w.ind.firstLine"), "1pt");
  EXPECT_EQ(value(b, "text.w.sz"), "10.5pt");
  EXPECT_EQ(value(b, "text.w.color"), "theme:accent1 tint:99");
}

TEST(WordImporterTest, InstancesOfListsInheritLevelsAndOverrideThem) {
  const std::string numbered = "<w:pPr><w:numPr><w:numId w:val='7'/></w:numPr></w:pPr>";
  const ImportedWord word = importParts(
      {.styles = wordStyle("paragraph", "H", numbered) +
                 wordStyle("paragraph", "N", basedOn("H") + "<w:pPr><w:numPr><w:numId w:val='0'/></w:numPr></w:pPr>"),
       .body = paragraph("<w:numPr><w:ilvl w:val='1'/><w:numId w:val='9'/></w:numPr>"),
       .numbering = "<w:abstractNum w:abstractNumId='3'><w:lvl w:ilvl='0'><w:start w:val='1'/><w:numFmt "
                    "w:val='decimal'/><w:pStyle w:val='H'/></w:lvl></w:abstractNum><w:num w:numId='7'><w:abstractNumId "
                    "w:val='3'/><w:lvlOverride w:ilvl='0'><w:startOverride w:val='5'/></w:lvlOverride></w:num>"});
  EXPECT_THAT(findings(*word.document),
              testing::ElementsAre("2 missing-reference  the list '9' does not exist; not set"));
  const OdfStyle* style = word.document->namedStyle("paragraph", "H");
  const auto* list = asOdfStyle(style->p_valueForProperty(keys::listStyle()));
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->identifier().view(), "list:num-7");
  EXPECT_EQ(parentOf(list), "list:abstractNum-3");
  const auto* level = asOdfStyle(list->p_valueForProperty(keys::listLevel(1)));
  EXPECT_EQ(value(level, "level.w.start"), "5");
  EXPECT_EQ(value(level, "level.w.numFmt"), "decimal");
  const auto* original = asOdfStyle(list->parent()->p_valueForProperty(keys::listLevel(1)));
  EXPECT_EQ(value(original, "level.w.start"), "1");
  EXPECT_EQ(original->p_valueForProperty(keys::levelParagraphStyle()), style);
  EXPECT_EQ(value(word.document->namedStyle("paragraph", "N"), "style.style.list-style-name"), "explicitly none");
  EXPECT_EQ(value(word.styleOfUse.at(0).get(), "style.style.list-level"), "1");
}

TEST(WordImporterTest, DirectFormattingBecomesOneVariationForAllThatAreEqual) {
  const ImportedWord word = importParts(
      {.styles =
           wordStyle("paragraph", "N", {}, " w:default='1'") + wordStyle("character", "E", "<w:rPr><w:b/></w:rPr>"),
       .body = paragraph("<w:keepNext/>", run("<w:rStyle w:val='E'/><w:b/>") + run("<w:b/><w:rStyle w:val='E'/>")) +
               paragraph("<w:pStyle w:val='N'/><w:keepNext w:val='true'/>") + "<w:p/>" +
               paragraph("<w:pStyle w:val='Gone'/>") +
               "<mc:AlternateContent><mc:Choice Requires='x'><w:p/></mc:Choice><mc:Fallback><w:p/></mc:Fallback>"
               "</mc:AlternateContent>"});
  EXPECT_THAT(
      findings(*word.document),
      testing::ElementsAre("4 missing-reference  the paragraph style 'Gone' does not exist; the default one is meant"));
  const OdfStyle* normal = word.document->namedStyle("paragraph", "N");
  const OdfStyle* direct = word.document->automaticStyle(4, "paragraph", "P1");
  ASSERT_NE(direct, nullptr);
  EXPECT_EQ(direct->parent(), normal);
  EXPECT_EQ(direct->usageCount(), 2);
  EXPECT_EQ(word.document->originOf(*normal)->uses, 3U);
  // It says again what the style says, and has to: toggles of the text's styles cancel each other out, it decides.
  const OdfStyle* bold = word.document->automaticStyle(4, "text", "R1");
  ASSERT_NE(bold, nullptr);
  EXPECT_EQ(bold->usageCount(), 2);
  EXPECT_NE(bold->p_overrideValueForProperty(PropertyKey("text.w.b")), nullptr);
  EXPECT_FALSE(word.document->undoManager()->canUndo());
}

TEST(WordImporterTest, WhateverNamesAStyleKeepsItInUse) {
  const auto uses = [](const ImportedWord& word, const std::string& id) {
    return word.document->namedStyle("paragraph", id)->usageCount();
  };
  const ImportedWord word = importParts(
      {.styles = wordStyle("paragraph", "A") + wordStyle("paragraph", "B") + wordStyle("paragraph", "C") +
                 wordStyle("paragraph", "D") + wordStyle("paragraph", "E") + wordStyle("paragraph", "F") +
                 wordStyle("numbering", "L", "<w:pPr><w:numPr><w:numId w:val='4'/></w:numPr></w:pPr>"),
       .body = paragraph("<w:pPrChange><w:pPr><w:pStyle w:val='A'/></w:pPr></w:pPrChange>") +
               "<mc:AlternateContent><mc:Choice Requires='x'><w:p><w:pPr><w:pStyle w:val='B'/></w:pPr></w:p>"
               "</mc:Choice></mc:AlternateContent><w:p><w:r><w:instrText>STYLEREF \"C name\"</w:instrText></w:r><w:r>"
               "<w:instrText> TOC \\t \"D name,1,Other,2\"</w:instrText></w:r></w:p>"
               "<w:tbl><w:tr><w:trPr><w:cantSplit/></w:trPr><w:tc><w:tcPr><w:gridSpan w:val='2'/><w:noWrap/></w:tcPr>"
               "<w:p/></w:tc></w:tr></w:tbl>",
       .settings = "<w:clickAndTypeStyle w:val='E'/>"});
  EXPECT_THAT(findings(*word.document), testing::IsEmpty());
  for (const char* id : {"A", "B", "C", "D", "E"}) EXPECT_EQ(uses(word, id), 1) << id;
  EXPECT_EQ(uses(word, "F"), 0);
  EXPECT_EQ(word.document->unknownUses.size(), 2U);  // names in the code of a field
  EXPECT_EQ(value(word.document->namedStyle("list", "L"), "style.style.list-style-name"), "num-4");
  EXPECT_EQ(value(word.document->automaticStyle(4, "table-row", "L1"), "table-row.w.cantSplit"), "true");
  EXPECT_EQ(value(word.document->automaticStyle(4, "table-cell", "C1"), "table-cell.w.noWrap"), "true");
}

TEST(WordImporterTest, TableStylesReferToTheStylesOfTheirPartsAndTheThemeIsAStyle) {
  const ImportedWord word = importParts(
      {.styles = wordStyle("table", "T",
                           "<w:tblStylePr w:type='firstRow'><w:rPr><w:b/></w:rPr><w:tcPr><w:vAlign w:val='center'/>"
                           "</w:tcPr></w:tblStylePr><w:tblStylePr w:type='attic'/>"),
       .theme = "<a:clrScheme><a:dk1><a:sysClr val='windowText' lastClr='000000'/></a:dk1><a:accent1><a:srgbClr "
                "val='4F81BD'/></a:accent1></a:clrScheme><a:fontScheme><a:minorFont><a:latin typeface='Calibri'/>"
                "</a:minorFont></a:fontScheme>"});
  EXPECT_THAT(findings(*word.document),
              testing::ElementsAre("2 missing-reference table:T formats a part of tables that there is not; left out"));
  const OdfStyle* table = word.document->namedStyle("table", "T");
  const auto* first = asOdfStyle(table->p_valueForProperty(PropertyKey("table.w.tblStylePr.firstRow")));
  EXPECT_EQ(value(first, "text.w.b"), "true");
  EXPECT_EQ(value(first, "table-cell.w.vAlign"), "center");
  const OdfStyle* theme = word.document->rootStyle("theme");
  EXPECT_EQ(value(theme, "theme.a.dk1"), "#000000");
  EXPECT_EQ(value(theme, "theme.a.accent1"), "#4f81bd");
  EXPECT_EQ(value(theme, "theme.a.minorFont.latin"), "Calibri");
}

TEST(WordImporterTest, ChainsMayBeLongAndPartsMayEndTooEarly) {
  std::string chain = wordStyle("paragraph", "s0", "<w:rPr><w:sz w:val='30'/></w:rPr>");
  for (int index = 1; index < 10'000; ++index) {
    chain += wordStyle("paragraph", "s" + std::to_string(index), basedOn("s" + std::to_string(index - 1)));
  }
  const ImportedWord word = importParts({.styles = chain + "<w:style><w:unclosed>", .body = "<w:p/>"});
  EXPECT_EQ(word.document->findings.size(), 1U);
  EXPECT_EQ(value(word.document->namedStyle("paragraph", "s9999"), "text.w.sz"), "15pt");
  std::string deep;
  for (int index = 0; index < 5'000; ++index) deep += "<w:sdt>";
  EXPECT_EQ(importParts({.body = "<w:p/>" + deep}).document->findings.size(), 1U);
}

}  // namespace
