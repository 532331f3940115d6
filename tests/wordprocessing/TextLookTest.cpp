// SPDX-License-Identifier: MIT
#include <insight/look/TextLook.h>
#include <wordprocessing/reading/TableParts.h>

#include <document/styles/StyleValues.h>

#include <tests/wordprocessing/WordDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

/// What a run of a document looks like; the first paragraph and run where the test does not say.
class Look {
 public:
  explicit Look(const WordParts& parts) {
    const TemporaryFolder folder;
    mRaw = WordDocument::read(WordPackage::read(folder.zip("x.docx", wordEntries(parts))));
    mWord = importWord(mRaw);
  }

  [[nodiscard]] TextLook look(std::size_t index) const {
    const WordParagraph& paragraph = mRaw.paragraphs.at(index);
    TextPlace place{.paragraph = mWord.styleOfUse[paragraph.use].get()};
    if (!paragraph.runs.empty()) place.text = mWord.styleOfUse[paragraph.runs[0]].get();
    if (paragraph.table != kNowhere) {
      place.table = mWord.styleOfUse[mRaw.tables[paragraph.table].use].get();
      place.tableParts = tablePartsOf(mRaw, paragraph, place.table);
    }
    return {*mWord.document, place};
  }
  [[nodiscard]] LookProperty property(const std::string& key, std::size_t index = 0) const {
    return look(index).property(PropertyKey(key));
  }
  [[nodiscard]] std::string counting(const std::string& key, std::size_t index) const {
    return std::string(look(index).countingKey(PropertyKey(key)).view());
  }
  [[nodiscard]] std::string text(const std::string& key, std::size_t index = 0) const {
    return valueText(property(key, index).value.get(), true);
  }
  // "direct R1: 5pt" for each style that has a part in the look, the strongest first.
  [[nodiscard]] std::vector<std::string> stack(const std::string& key) const {
    const LookProperty found = property(key);
    std::vector<std::string> lines;
    for (const LookEntry& entry : found.entries) {
      lines.push_back(std::string(entry.counts ? "+" : "-") + std::string(levelName(entry.level)) + ' ' +
                      mWord.document->labelOf(*entry.style) + ": " + valueText(entry.value, true));
    }
    return lines;
  }

 private:
  WordDocument mRaw;
  ImportedWord mWord;
};

std::string defaults(const std::string& run) {
  return "<w:docDefaults><w:rPrDefault><w:rPr>" + run + "</w:rPr></w:rPrDefault></w:docDefaults>";
}

std::string text(const std::string& paragraph, const std::string& run) {
  return "<w:p><w:pPr>" + paragraph + "</w:pPr><w:r><w:rPr>" + run + "</w:rPr></w:r></w:p>";
}

const std::string kBold = "<w:rPr><w:b/></w:rPr>";
const std::string kInBoth = "<w:pStyle w:val='P'/>";

TEST(TextLookTest, TogglesTurnEachOtherOverAndDirectFormattingDecides) {
  const std::string styles = wordStyle("paragraph", "P", kBold) + wordStyle("paragraph", "Q", basedOn("P") + kBold) +
                             wordStyle("character", "C", kBold);
  const Look look({.styles = styles,
                   .body = text(kInBoth, "") + text(kInBoth, "<w:rStyle w:val='C'/>") +
                           text("<w:pStyle w:val='Q'/>", "") + text(kInBoth, "<w:rStyle w:val='C'/><w:b/>") +
                           text(kInBoth, "<w:b w:val='0'/>")});
  EXPECT_EQ(look.text("text.w.b", 0), "true");
  EXPECT_EQ(look.text("text.w.b", 1), "false");  // said twice
  EXPECT_EQ(look.text("text.w.b", 2), "true");   // said twice, by styles of one kind
  EXPECT_EQ(look.text("text.w.b", 3), "true");
  EXPECT_EQ(look.text("text.w.b", 4), "false");
  const Look set({.styles = defaults("<w:b/>") + styles, .body = text(kInBoth, "")});
  EXPECT_EQ(set.text("text.w.b"), "true");  // whatever the styles say
}

TEST(TextLookTest, TheStrongestLevelDecidesAndTheWholeStackIsTold) {
  const Look look({.styles = defaults("<w:sz w:val='20'/>") +
                             wordStyle("paragraph", "P", "<w:rPr><w:sz w:val='24'/></w:rPr>") +
                             wordStyle("character", "C", "<w:rPr><w:sz w:val='28'/></w:rPr>"),
                   .body = text(kInBoth, "<w:rStyle w:val='C'/><w:sz w:val='32'/>")});
  EXPECT_EQ(look.text("text.w.sz"), "16pt");
  EXPECT_THAT(look.stack("text.w.sz"), testing::ElementsAre("+direct word/document.xml:text:R1: 16pt",
                                                            "-character text:C: 14pt", "-paragraph paragraph:P: 12pt",
                                                            "-defaults paragraph: 10pt", "-defaults text: 10pt"));
}

TEST(TextLookTest, IndentsOfALevelStandJustBelowTheStyleThatSetsTheList) {
  const std::string numbering =
      "<w:abstractNum w:abstractNumId='1'><w:lvl w:ilvl='0'/><w:lvl w:ilvl='1'><w:pStyle w:val='Q'/><w:pPr><w:ind "
      "w:left='40' w:right='60'/></w:pPr><w:rPr><w:b/></w:rPr></w:lvl></w:abstractNum><w:num "
      "w:numId='1'><w:abstractNumId "
      "w:val='1'/></w:num>";
  const Look look({.styles = wordStyle("paragraph", "P", "<w:pPr><w:ind w:left='100' w:right='200'/></w:pPr>") +
                             wordStyle("paragraph", "Q",
                                       basedOn("P") + "<w:pPr><w:numPr><w:numId w:val='1'/></w:numPr><w:ind "
                                                      "w:right='300'/></w:pPr>"),
                   .body = text("<w:pStyle w:val='Q'/>", ""),
                   .numbering = numbering});
  EXPECT_EQ(look.text("paragraph.w.ind.left"), "2pt");
  EXPECT_EQ(look.text("paragraph.w.ind.right"), "15pt");
  EXPECT_EQ(look.text("text.w.b"), "");  // of the number, not of the text
}

TEST(TextLookTest, PartsOfATableAreLaidOverItsStyleByPosition) {
  const auto part = [](const std::string& type, const std::string& size) {
    return "<w:tblStylePr w:type='" + type + "'><w:rPr><w:sz w:val='" + size + "'/></w:rPr></w:tblStylePr>";
  };
  const auto row = [](const std::string& first) {
    return "<w:tr><w:tc><w:p><w:pPr>" + first + "</w:pPr><w:r/></w:p></w:tc><w:tc><w:p><w:r/></w:p></w:tc></w:tr>";
  };
  const Look look(
      {.styles = defaults("<w:sz w:val='2'/>") +
                 wordStyle("table", "T",
                           "<w:rPr><w:sz w:val='4'/></w:rPr>" + part("firstRow", "6") + part("firstCol", "8") +
                               part("nwCell", "10") + part("band1Horz", "12") + part("band2Horz", "14")) +
                 wordStyle("paragraph", "P", "<w:rPr><w:sz w:val='16'/></w:rPr>"),
       .body = "<w:tbl><w:tblPr><w:tblStyle w:val='T'/><w:tblLook w:val='04A0'/></w:tblPr>" + row("") + row("") +
               row(kInBoth) + "</w:tbl>" + text("", "")});
  EXPECT_EQ(look.text("text.w.sz", 0), "5pt");  // the corner
  EXPECT_EQ(look.text("text.w.sz", 1), "3pt");  // the first row
  EXPECT_EQ(look.text("text.w.sz", 2), "4pt");  // the first column
  EXPECT_EQ(look.text("text.w.sz", 3), "6pt");  // the first band below the first row
  EXPECT_EQ(look.text("text.w.sz", 4), "8pt");  // its paragraph style is stronger
  EXPECT_EQ(look.text("text.w.sz", 5), "7pt");
  EXPECT_EQ(look.text("text.w.sz", 6), "1pt");  // behind the table
}

TEST(TextLookTest, ColumnsAreLaidOverRowsAndDirectLevelsOverThoseOfStyles) {
  const auto part = [](const std::string& type, const std::string& size) {
    return "<w:tblStylePr w:type='" + type + "'><w:rPr><w:sz w:val='" + size + "'/></w:rPr></w:tblStylePr>";
  };
  const Look table({.styles = wordStyle("table", "T", part("firstCol", "8") + part("firstRow", "6")),
                    .body = "<w:tbl><w:tblPr><w:tblStyle w:val='T'/><w:tblLook w:firstRow='1' w:firstColumn='1'/>"
                            "</w:tblPr><w:tr><w:tc><w:p/></w:tc></w:tr></w:tbl>"});
  EXPECT_EQ(table.text("text.w.sz", 0), "4pt");
  const auto level = [](const std::string& number, const std::string& rest) {
    return "<w:lvl w:ilvl='" + number + "'>" + rest + "<w:pPr><w:ind w:left='" + number + "0'/></w:pPr></w:lvl>";
  };
  const auto list = [](const std::string& number) {
    return "<w:numPr><w:ilvl w:val='" + number + "'/><w:numId w:val='1'/></w:numPr>";
  };
  const Look look({.styles = wordStyle("paragraph", "P", "<w:pPr>" + list("3") + "</w:pPr>") +
                             wordStyle("paragraph", "Q", "<w:pPr>" + list("3") + "</w:pPr>"),
                   .body = text(kInBoth, "") + text(kInBoth + list("2"), "") + text("<w:pStyle w:val='Q'/>", "") +
                           text(kInBoth + "<w:numPr><w:numId w:val='0'/></w:numPr>", ""),
                   .numbering = "<w:abstractNum w:abstractNumId='1'>" + level("1", "<w:pStyle w:val='P'/>") +
                                level("2", "") + level("3", "") +
                                "</w:abstractNum><w:num w:numId='1'><w:abstractNumId w:val='1'/></w:num>"});
  EXPECT_EQ(look.text("paragraph.w.ind.left", 0), "0.5pt");  // the level that says so, whatever the style says
  EXPECT_EQ(look.text("paragraph.w.ind.left", 1), "1pt");
  EXPECT_EQ(look.text("paragraph.w.ind.left", 2), "1.5pt");
  EXPECT_EQ(look.text("paragraph.w.ind.left", 3), "");  // no list
}

TEST(TextLookTest, ComplexScriptsHaveTogglesSizesAndFontsOfTheirOwn) {
  const Look look({.styles = wordStyle("paragraph", "P", "<w:rPr><w:bCs/><w:szCs w:val='40'/></w:rPr>") +
                             wordStyle("character", "C", "<w:rPr><w:bCs/><w:rtl/></w:rPr>"),
                   .body = text(kInBoth, "") + text(kInBoth, "<w:rStyle w:val='C'/><w:b/>")});
  EXPECT_EQ(look.counting("text.w.sz", 0), "text.w.sz");
  EXPECT_EQ(look.counting("text.w.sz", 1), "text.w.szCs");
  EXPECT_EQ(look.text("text.w.bCs", 0), "true");
  EXPECT_EQ(look.text("text.w.bCs", 1), "false");
}

TEST(TextLookTest, ReferencesToTheThemeAreFollowed) {
  const Look look(
      {.body = text("",
                    "<w:color w:themeColor='text2' w:themeShade='80'/><w:u w:val='single' w:color='00FF00'/><w:rFonts "
                    "w:asciiTheme='minorHAnsi' w:hAnsi='Arial'/>"),
       .theme =
           "<a:clrScheme><a:dk2><a:srgbClr val='808080'/></a:dk2></a:clrScheme><a:fontScheme><a:minorFont><a:latin "
           "typeface='Calibri'/></a:minorFont></a:fontScheme>"});
  EXPECT_EQ(look.text("text.w.color"), "#404040");
  EXPECT_EQ(look.text("text.w.u.color"), "#00ff00");
  EXPECT_EQ(look.text("text.w.rFonts.ascii"), "Calibri");
  EXPECT_EQ(look.text("text.w.rFonts.hAnsi"), "Arial");
  const Look mapped({.body = text("", "<w:color w:themeColor='text1'/>"),
                     .theme = "<a:clrScheme><a:dk1><a:srgbClr val='000000'/></a:dk1><a:lt1><a:srgbClr val='FFFFFF'/>"
                              "</a:lt1></a:clrScheme>",
                     .settings = "<w:clrSchemeMapping w:bg1='dark1' w:t1='light1'/>"});
  EXPECT_EQ(mapped.text("text.w.color"), "#ffffff");
}

}  // namespace
