// SPDX-License-Identifier: MIT
#include <opendocument/OpenDocumentFormat.h>
#include <opendocument/reading/StyleImporter.h>

#include <document/styles/FamilyStyles.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <tests/TestDocuments.h>

namespace {

using namespace zt;
using namespace zt::test;

Ref<ZTDocument> import(const std::string& text) {
  return importStyles(RawDocument::read(Package::fromFlatText(text, "x.fodt")));
}

std::string element(const std::string& family, const std::string& name, const std::string& parent,
                    const std::string& rest = {}) {
  return "<style:style style:family='" + family + "' style:name='" + name + "'" +
         (parent.empty() ? "" : " style:parent-style-name='" + parent + "'") + ">" + rest + "</style:style>\n";
}

std::string paragraphProperties(const std::string& attributes) {
  return "<style:paragraph-properties " + attributes + "/>";
}

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
  const NSObject* raw = style->p_valueForProperty(PropertyKey(key));
  if (isNull(raw)) return "explicitly none";
  return valueText(style->valueForProperty(PropertyKey(key)).get(), true);
}

/// Named, default and automatic styles of several families, read.
class PlacesTest : public ::testing::Test {
 protected:
  const Ref<ZTDocument> document =
      import(flat("<style:default-style style:family='paragraph'><style:text-properties "
                  "fo:font-size='12pt'/></style:default-style>" +
                      element("paragraph", "Body", "Standard") +  // its parent stands further down
                      element("paragraph", "Standard", "") + element("text", "Body", "") + element("weird", "W", ""),
                  element("paragraph", "P1", "Body") + element("table", "T1", ""),
                  "<text:p text:style-name='P1'/><text:h text:style-name='P1'/><table:table table:style-name='T1'/>"));
  OdfStyle* body = document->namedStyle("paragraph", "Body");
  OdfStyle* automatic = document->automaticStyle(0, "paragraph", "P1");
};

TEST_F(PlacesTest, NothingIsFoundWrong) {
  EXPECT_THAT(findings(*document), testing::IsEmpty());
  EXPECT_FALSE(document->undoManager()->canUndo());
  testing::internal::CaptureStderr();
  document->stylesheet().validate();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PlacesTest, NamedStylesInheritFromTheirParentsAndTheseFromTheRoot) {
  EXPECT_EQ(&body->classObject(), &ParagraphStyle::styleClass());
  EXPECT_EQ(body->parent(), document->namedStyle("paragraph", "Standard"));
  EXPECT_EQ(body->parent()->parent(), document->rootStyle("paragraph"));
  EXPECT_EQ(document->namedStyle("weird", "W")->familyName(), "weird");
}

TEST_F(PlacesTest, AutomaticStylesAreAnonymousAndInheritFromNamedOnes) {
  ASSERT_NE(automatic, nullptr);
  EXPECT_TRUE(automatic->isAnonymous());
  EXPECT_FALSE(automatic->isNamed());
  EXPECT_EQ(automatic->parent(), body);
  EXPECT_EQ(value(automatic, "text.fo.font-size"), "12pt");
}

TEST_F(PlacesTest, UsesAreCountedAndPassedOn) {
  ASSERT_NE(automatic, nullptr);
  EXPECT_EQ(automatic->usageCount(), 2u);
  EXPECT_EQ(document->rootStyle("paragraph")->usageCount(), 1u);
  EXPECT_EQ(document->namedStyle("text", "Body")->usageCount(), 0u);
}

TEST_F(PlacesTest, ARootIsMadeWhereTheFileHasNoneAndInheritsFromTheApplicationsDefault) {
  EXPECT_EQ(document->automaticStyle(0, "table", "T1")->parent(), document->rootStyle("table"));
  EXPECT_EQ(document->rootStyle("table")->parent(), document->defaults().styleWithIdentifier("table"));
}

TEST(StyleImporterTest, AutomaticStylesBelongToTheirPart) {
  const TemporaryFolder folder;
  const auto part = [](const std::string& root, const std::string& size) {
    return document(root, "", element("text", "T1", "", "<style:text-properties fo:font-size='" + size + "'/>"));
  };
  folder.write("styles.xml", part("document-styles", "1pt"));
  folder.write("content.xml", part("document-content", "2pt"));
  const Ref<ZTDocument> document = openDocumentFormat().read(folder / "");
  EXPECT_EQ(value(document->referredStyle(0, "text", "T1"), "text.fo.font-size"), "1pt");
  EXPECT_EQ(value(document->referredStyle(1, "text", "T1"), "text.fo.font-size"), "2pt");
  EXPECT_EQ(document->stylesCalled("T1").size(), 2u);
  EXPECT_EQ(document->stylesCalled("content.xml:text:T1").size(), 1u);
}

TEST(StyleImporterTest, ParentsThatCannotBeGiveWayToTheRootWithOneFindingEach) {
  const Ref<ZTDocument> document =
      import(flat(element("paragraph", "A", "B") + element("paragraph", "B", "C") + element("paragraph", "C", "B") +
                      element("paragraph", "Self", "Self") + element("paragraph", "Lost", "Nowhere") +
                      element("paragraph", "Odd", "T") + element("paragraph", "Of", "P1") + element("text", "T", "") +
                      element("paragraph", "Empty", ""),
                  element("paragraph", "P1", "A") + element("paragraph", "P2", "P1")));
  EXPECT_THAT(findings(*document),
              testing::UnorderedElementsAre("3 parent-loop paragraph:B the parent 'C' inherits from this style; "
                                            "inherits from the default style of the family instead",
                                            "5 parent-loop paragraph:Self the parent 'Self' is the style itself; "
                                            "inherits from the default style of the family instead",
                                            "6 missing-parent paragraph:Lost the parent 'Nowhere' does not exist; "
                                            "inherits from the default style of the family instead",
                                            "7 missing-parent paragraph:Odd the parent 'T' is a style of another "
                                            "family (text); inherits from the default style of the "
                                            "family instead",
                                            "8 missing-parent paragraph:Of the parent 'P1' is an automatic style; "
                                            "inherits from the default style of the family instead",
                                            "12 missing-parent paragraph:P2 the parent 'P1' is an automatic style; "
                                            "inherits from the default style of the family "
                                            "instead"));
  const ZTSStyle* root = document->rootStyle("paragraph");
  for (const char* name : {"B", "Self", "Lost", "Odd", "Of", "Empty"})
    EXPECT_EQ(document->namedStyle("paragraph", name)->parent(), root) << name;
  EXPECT_EQ(document->namedStyle("paragraph", "C")->parent(), document->namedStyle("paragraph", "B"));
  EXPECT_EQ(document->namedStyle("paragraph", "A")->parent(), document->namedStyle("paragraph", "B"));
}

TEST(StyleImporterTest, RepeatedNamelessAndStrayStylesAreTold) {
  const auto size = [](const char* points) {
    return std::string("<style:text-properties fo:font-size='") + points + "'/>";
  };
  const Ref<ZTDocument> document =
      import(flat(element("text", "N", "", size("1pt")) + element("text", "N", "", size("2pt")) + element("", "F", "") +
                      element("a:b", "F", "") + element("list", "F", "") + element("text", "", "") + "<style:style/>",
                  element("text", "T", "", size("3pt")) + element("text", "T", "", size("4pt"))));
  EXPECT_THAT(findings(*document),
              testing::UnorderedElementsAre(
                  "2 repeated-style text:N is defined again further down; the later one counts",
                  "4 unusable-family :F the family '' cannot be used; left out",
                  "5 unusable-family a:b:F the family 'a:b' cannot be used; left out",
                  "6 unusable-family list:F the family 'list' cannot be used; left out",
                  "7 nameless-style text: has no name; kept, but nothing can refer to it",
                  "8 unusable-family : the family '' cannot be used; left out",
                  "9 repeated-style text:T repeats the name of an earlier automatic style; left out"));
  EXPECT_EQ(value(document->namedStyle("text", "N"), "text.fo.font-size"), "2pt");
  EXPECT_EQ(value(document->automaticStyle(0, "text", "T"), "text.fo.font-size"), "3pt");
}

TEST(StyleImporterTest, ValuesGetTheirTypeAndNothingUnknownIsLost) {
  const Ref<ZTDocument> document = import(flat(element(
      "paragraph", "A", "",
      paragraphProperties(
          "fo:margin-left='1in' fo:line-height='110%' fo:keep-with-next='sometimes' fo:widows='2' fo:text-align='end' "
          "fo:background-color='#FF0000' style:join-border='true' fo:padding='5' new:thing=' as it is ' "
          "xmlns:new='http://example.com/new'") +
          "<style:text-properties fo:font-size='big' fo:color='#12345'/><style:new-properties fo:x='y'><style:deep "
          "a='1'/></style:new-properties>"
          "<style:map style:condition='a' style:apply-style-name='B'/><style:map style:condition='b'/>")));
  EXPECT_THAT(
      findings(*document),
      testing::ElementsAre(
          "2 unusable-value paragraph:A the value 'sometimes' of paragraph.fo.keep-with-next cannot be used; not set",
          "2 unusable-value paragraph:A the value '5' of paragraph.fo.padding cannot be used; not set",
          "2 unusable-value paragraph:A the value 'big' of text.fo.font-size cannot be used; not set",
          "2 unusable-value paragraph:A the value '#12345' of text.fo.color cannot be used; not set"));
  const OdfStyle* style = document->namedStyle("paragraph", "A");
  const std::tuple<const char*, const char*, const char*> expected[] = {
      {"paragraph.fo.margin-left", "length", "1in"},
      {"paragraph.fo.line-height", "percentage", "110%"},
      {"paragraph.fo.widows", "number", "2"},
      {"paragraph.fo.text-align", "text", "end"},
      {"paragraph.fo.background-color", "colour", "#ff0000"},
      {"paragraph.style.join-border", "boolean", "true"},
      {"paragraph.x-http-example-com-new.thing", "opaque", " as it is "},
      {"new.fo.x", "opaque", "y"},
      {"new.style.deep", "opaque", "<style:deep none:a=\"1\"/>"},
      {"style.style.map", "opaque",
       "<style:map style:condition=\"a\" style:apply-style-name=\"B\"/><style:map style:condition=\"b\"/>"},
  };
  for (const auto& [key, kind, text] : expected) {
    const Ref<NSObject> found = style->valueForProperty(PropertyKey(key));
    EXPECT_EQ(valueKind(found.get()), kind) << key;
    EXPECT_EQ(valueText(found.get()), text) << key;
    EXPECT_TRUE(style->validateValueForProperty(found.get(), PropertyKey(key))) << key;
  }
  EXPECT_EQ(style->overridePropertyMap()->count(), std::size(expected));
  // Equal values are one object, whoever holds them.
  const Ref<ZTDocument> twice = import(flat(element("text", "A", "", "<style:text-properties fo:font-size='9pt'/>") +
                                            element("text", "B", "", "<style:text-properties fo:font-size='9pt'/>")));
  EXPECT_EQ(twice->namedStyle("text", "A")->p_overrideValueForProperty("text.fo.font-size"),
            twice->namedStyle("text", "B")->p_overrideValueForProperty("text.fo.font-size"));
}

TEST(StyleImporterTest, TheMarginShorthandFillsWhatIsNotGiven) {
  const Ref<ZTDocument> document = import(flat(
      element("paragraph", "A", "", paragraphProperties("fo:margin-top='3cm' fo:margin='1cm' fo:margin-left='2cm'")) +
      element("paragraph", "B", "A", paragraphProperties("fo:margin='200%'")) +
      element("paragraph", "C", "A", paragraphProperties("fo:margin='auto'"))));
  const auto margins = [&](const char* name) {
    std::string all;
    for (const char* side : {"left", "right", "top", "bottom"}) {
      all += value(document->namedStyle("paragraph", name), std::string("paragraph.fo.margin-") + side) + ' ';
    }
    return all;
  };
  EXPECT_EQ(margins("A"), "2cm 1cm 3cm 1cm ");
  EXPECT_EQ(margins("B"), "4cm 2cm 6cm 2cm ");
  EXPECT_EQ(margins("C"), margins("A"));
  EXPECT_THAT(findings(*document),
              testing::ElementsAre(
                  "4 unusable-value paragraph:C the value 'auto' of paragraph.fo.margin cannot be used; not set"));
}

/// A list with good and bad levels, and styles of paragraphs that name it, name none, and name one that is missing.
class ListsTest : public ::testing::Test {
 protected:
  const std::string list =
      "<text:list-style style:name='L' style:display-name='My List'><text:list-level-style-number text:level='1' "
      "text:style-name='Mark' "
      "style:num-format='1'><style:list-level-properties text:space-before='1cm'/></text:list-level-style-number>"
      "<text:list-level-style-bullet text:level='2' text:style-name='Gone'/><text:list-level-style-bullet "
      "text:level='2'/>"
      "<text:list-level-style-bullet text:level='11'/><text:list-level-style-bullet text:level='3' "
      "text:style-name=''/></text:list-style>\n";
  const Ref<ZTDocument> document =
      import(flat(element("text", "Mark", "") + list +
                      "<style:style style:family='paragraph' style:name='A' style:list-style-name='L'/>\n" +
                      "<style:style style:family='paragraph' style:name='B' style:parent-style-name='A' "
                      "style:list-style-name='' style:master-page-name=''/>\n" +
                      "<style:style style:family='paragraph' style:name='C' style:parent-style-name='A' "
                      "style:list-style-name='Nope' style:next-style-name='A'/>\n" +
                      element("paragraph", "D", "C") +
                      "<style:style style:family='table' style:name='T' style:list-style-name='L'/>",
                  "<text:list-style style:name='L'/><style:style style:family='paragraph' style:name='P' "
                  "style:list-style-name='L'/>",
                  "<text:p text:style-name='A'/>"));
  OdfStyle* named = document->namedStyle("list", "L");

  [[nodiscard]] std::string paragraph(const char* name, const char* key) const {
    return value(document->namedStyle("paragraph", name), key);
  }
};

TEST_F(ListsTest, SaysWhichLevelsAndReferencesCannotBeKept) {
  EXPECT_THAT(
      findings(*document),
      testing::UnorderedElementsAre("3 unusable-level list:L repeats a level; the earlier one counts",
                                    "3 unusable-level list:L a level without a number from 1 to 10; left out",
                                    "3 missing-reference list:L/level-2 the text style 'Gone' does not exist; not set",
                                    "6 missing-reference paragraph:C the list style 'Nope' does not exist; not set"));
}

TEST_F(ListsTest, ListsAndTheirLevelsAreStylesThatRefer) {
  ASSERT_NE(named, nullptr);
  EXPECT_EQ(named->name().view(), "My List");
  const OdfStyle* level = asOdfStyle(asStyle(named->valueForProperty(keys::listLevel(1)).get()));
  ASSERT_NE(level, nullptr);
  EXPECT_EQ(value(level, "list-level.text.space-before"), "1cm");
  EXPECT_EQ(level->valueForProperty(keys::levelTextStyle()).get(), document->namedStyle("text", "Mark"));
}

TEST_F(ListsTest, AnEmptyNameIsExplicitlyNoneAndAMissingStyleIsNotSet) {
  EXPECT_EQ(paragraph("B", "style.style.list-style-name"), "explicitly none");
  EXPECT_EQ(paragraph("B", "style.style.master-page-name"), "explicitly none");
  EXPECT_EQ(document->namedStyle("paragraph", "C")->valueForProperty(keys::listStyle()).get(), named)
      << "inherited: of the name, not the automatic one";
  EXPECT_EQ(document->automaticStyle(0, "paragraph", "P")->valueForProperty(keys::listStyle()).get(),
            document->automaticStyle(0, "list", "L"));
}

TEST_F(ListsTest, TheNextStyleIsNotInherited) {
  EXPECT_EQ(paragraph("C", "style.style.next-style-name"), "A");
  EXPECT_EQ(paragraph("D", "style.style.next-style-name"), "");
}

TEST_F(ListsTest, AFamilyThatKnowsNoListsKeepsTheNameAsText) {
  EXPECT_EQ(value(document->namedStyle("table", "T"), "style.style.list-style-name"), "L");
}

TEST_F(ListsTest, AParagraphInTheTextUsesItsListTheLevelsAndTheirTextStyle) {
  EXPECT_EQ(named->usageCount(), 1u);
  EXPECT_EQ(document->namedStyle("text", "Mark")->usageCount(), 1u);
}

TEST(StyleImporterTest, LongChainsAndManySiblingsCostTheirSizeAndNoMore) {
  std::string chain;
  for (int index = 20'000; index > 0; --index) {  // children first
    chain += element("text", "S" + std::to_string(index), "S" + std::to_string(index - 1),
                     index % 1000 == 0 ? "<style:text-properties fo:font-size='100%'/>" : "");
  }
  chain += element("text", "S0", "", "<style:text-properties fo:font-size='12pt'/>");
  Ref<ZTDocument> document = import(flat(chain));
  EXPECT_EQ(value(document->namedStyle("text", "S20000"), "text.fo.font-size"), "12pt");
  document.reset();

  std::string loop;
  for (int index = 0; index < 20'000; ++index)
    loop += element("text", "S" + std::to_string(index), "S" + std::to_string((index + 1) % 20'000));
  document = import(flat(loop));
  EXPECT_EQ(document->findings.size(), 1u);

  std::string siblings;
  for (int index = 0; index < 50'000; ++index)
    siblings +=
        "<style:style style:name='S" + std::to_string(index) + "' style:family='text' style:parent-style-name='N'/>";
  document = import(flat("", siblings));
  EXPECT_EQ(document->findings.size(), 50'000u);
  EXPECT_EQ(document->rootStyle("text")->children().count(), 50'000u);
}

}  // namespace
