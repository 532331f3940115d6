// SPDX-License-Identifier: MIT
#include <document/package/ZipRewriter.h>
#include <wordprocessing/writing/EditableWordDocument.h>

#include <platform/NSUndoManager.h>

#include <tests/Files.h>
#include <tests/wordprocessing/WordDocuments.h>

#include <functional>
#include <map>
#include <string>

namespace {

using namespace zt;
using namespace zt::test;

using Edit = std::function<void(DocumentEditor&)>;
using Parts = std::map<std::string, std::string>;

Parts partsOf(EditableDocument& document) {
  Parts parts;
  for (const XmlPart& part : document.writtenParts()) parts[part.name] = part.bytes;
  return parts;
}

/// A package made of strings, to be edited.
class Letter {
 public:
  explicit Letter(const WordParts& parts) : mPath(mFolder.zip("x.docx", wordEntries(parts))) {}

  /// The parts that an edit changes, as they are then. Undo has to bring back the first bytes, redo the same result.
  [[nodiscard]] Parts edited(const Edit& edit) const {
    const auto document = EditableWordDocument::open(mPath);
    const Parts before = partsOf(*document);
    NSUndoManager& undo = *document->document().undoManager();
    undo.performInGroup([&] { edit(document->editor()); });
    const Parts after = partsOf(*document);
    undo.undo();
    EXPECT_EQ(partsOf(*document), before);
    undo.redo();
    EXPECT_EQ(partsOf(*document), after);
    Parts changed;
    for (const auto& [name, bytes] : after) {
      if (bytes != before.at(name)) changed[name] = bytes;
    }
    return changed;
  }

  /// What is written of one part, the part as it was with these pieces replaced; nothing else may change.
  void expect(const Edit& edit, const std::map<std::string, std::vector<std::pair<std::string, std::string>>>& pieces) {
    Parts wanted;
    for (const XmlPart& part : EditableWordDocument::open(mPath)->writtenParts()) {
      const auto found = pieces.find(part.name.substr(part.name.rfind('/') + 1));
      if (found == pieces.end()) continue;
      std::string text = part.bytes;
      for (const auto& [before, after] : found->second) {
        EXPECT_NE(text.find(before), std::string::npos) << before;
        for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos; at += after.size())
          text.replace(at, before.size(), after);
      }
      wanted[part.name] = text;
    }
    EXPECT_EQ(edited(edit), wanted);
  }

  [[nodiscard]] std::string refusal(const Edit& edit) const {
    try {
      const auto document = EditableWordDocument::open(mPath);
      document->document().undoManager()->performInGroup([&] { edit(document->editor()); });
      (void)document->writtenParts();
      return {};
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  [[nodiscard]] const std::string& path() const { return mPath; }
  [[nodiscard]] const TemporaryFolder& folder() const { return mFolder; }

 private:
  TemporaryFolder mFolder;
  std::string mPath;
};

void set(DocumentEditor& editor, const std::string& style, const std::vector<std::string>& assignments) {
  OdfStyle& target = editor.style(style);
  std::vector<DocumentEditor::Assignment> read;
  for (const std::string& each : assignments) read.push_back(editor.assignment(target, each));
  editor.set(target, read);
}

class RealWordDocumentTest : public testing::TestWithParam<const char*> {};

TEST_P(RealWordDocumentTest, IsWrittenByteForByteAndEditedWithUndo) {
  const TemporaryFolder folder;
  const auto path = std::filesystem::path(ZT_TEST_DATA_DIR) / "docx" / (std::string(GetParam()) + ".docx");
  const auto document = EditableWordDocument::open(path);
  const Parts before = partsOf(*document);
  document->save({.out = folder / "same.docx"});
  EXPECT_TRUE(contentOf((folder / "same.docx").string()) == contentOf(path.string()));
  NSUndoManager& undo = *document->document().undoManager();
  std::vector<std::string> labels;
  for (const Ref<OdfStyle>& style : document->document().readStyles()) {
    const bool isText = style->family() == StyleFamily::paragraph || style->family() == StyleFamily::text;
    const bool isNamed = document->document().originOf(*style)->kind == StyleOrigin::Kind::named;
    if (isText && isNamed && style->isIdentified()) labels.push_back(document->document().labelOf(*style));
  }
  for (std::size_t index = 0; index < labels.size(); index += 1 + labels.size() / 4) {
    SCOPED_TRACE(labels[index]);
    for (const Edit& edit :
         {Edit([&](DocumentEditor& editor) {
            set(editor, labels[index], {"text.w.sz=33.5pt", "text.w.caps=true"});
          }),
          Edit([&](DocumentEditor& editor) { editor.rename(editor.style(labels[index]), "Quite Another"); })}) {
      undo.performInGroup([&] { edit(document->editor()); });
      EXPECT_NE(partsOf(*document), before);
      document->save({.out = folder / "edited.docx"});
      EXPECT_NO_THROW(EditableWordDocument::open(folder / "edited.docx"));
      undo.undo();
      EXPECT_EQ(partsOf(*document), before);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, RealWordDocumentTest,
                         testing::Values("01-tiny-byte-order-mark", "02-tiny-generator", "03-small-web-editor",
                                         "04-small-toggles", "05-medium-rtl-table", "06-medium-strict",
                                         "07-medium-deep-chain", "08-medium-library-template",
                                         "09-medium-duplicate-ids", "10-large-report"));

TEST(EditableWordDocumentTest, ChangesOnlyTheValueThatIsSet) {
  Letter letter(
      {.styles = "<w:docDefaults><w:rPrDefault><w:rPr><w:sz w:val='20'/></w:rPr></w:rPrDefault>"
                 "</w:docDefaults><!-- kept -->" +
                 wordStyle("paragraph", "P",
                           "<w:pPr><w:spacing w:before='10' w:x='1'/><w:ind w:start='5' w:hanging='7'/></w:pPr>"
                           "<w:rPr><w:rFonts w:asciiTheme='minorHAnsi'/><w:b/><w:u w:val='single'/></w:rPr>") +
                 wordStyle("table", "T", "<w:tblStylePr w:type='firstRow'><w:rPr><w:b/></w:rPr></w:tblStylePr>"),
       .body = "<w:p><w:pPr><w:pStyle w:val='P'/><w:jc w:val='both'/></w:pPr><w:r/></w:p>"});
  const auto setting = [](const std::string& style, const std::vector<std::string>& assignments) {
    return [=](DocumentEditor& editor) { set(editor, style, assignments); };
  };
  letter.expect(setting("P", {"paragraph.w.spacing.before=1pt"}), {{"styles.xml", {{"before='10'", "before='20'"}}}});
  letter.expect(setting("P", {"text.w.sz=10.3pt", "text.w.color=#ff0000"}),
                {{"styles.xml", {{"<w:b/><w:u", "<w:b/><w:color w:val=\"FF0000\"/><w:sz w:val=\"10.3pt\"/><w:u"}}}});
  letter.expect(setting("P", {"text.w.b"}), {{"styles.xml", {{"<w:b/><w:u", "<w:u"}}}});
  letter.expect(setting("P", {"text.w.b=false"}), {{"styles.xml", {{"<w:b/><w:u", "<w:b w:val=\"0\"/><w:u"}}}});
  letter.expect(setting("P", {"text.w.rFonts.ascii=Arial"}),
                {{"styles.xml", {{"<w:rFonts w:asciiTheme='minorHAnsi'/>", "<w:rFonts w:ascii=\"Arial\"/>"}}}});
  letter.expect(
      setting("P", {"text.w.color=theme:accent1 tint:99"}),
      {{"styles.xml",
        {{"<w:b/><w:u", "<w:b/><w:color w:val=\"auto\" w:themeColor=\"accent1\" w:themeTint=\"99\"/><w:u"}}}});
  letter.expect(setting("P", {"paragraph.w.ind.left=1pt", "paragraph.w.ind.firstLine=1pt"}),
                {{"styles.xml", {{"w:start='5' w:hanging='7'", "w:start='20' w:firstLine=\"20\""}}}});
  letter.expect(
      [](DocumentEditor& editor) {
        for (const char* root : {"text", "paragraph"}) set(editor, root, {"text.w.i=true"});
      },
      {{"styles.xml", {{"<w:sz w:val='20'/>", "<w:i/><w:sz w:val='20'/>"}}}});
  letter.expect(setting("word/document.xml:paragraph:P1", {"paragraph.w.jc=center", "paragraph.w.keepNext=true"}),
                {{"document.xml", {{"<w:jc w:val='both'/>", "<w:keepNext/><w:jc w:val='center'/>"}}}});
  letter.expect(setting("word/styles.xml:table-cell:T/firstRow", {"text.w.i=true"}),
                {{"styles.xml", {{"<w:b/></w:rPr></w:tblStylePr>", "<w:b/><w:i/></w:rPr></w:tblStylePr>"}}}});
}

TEST(EditableWordDocumentTest, NamesFollowInEveryPart) {
  const std::string list =
      "<w:abstractNum w:abstractNumId='1'><w:lvl w:ilvl='0'><w:pStyle w:val='P'/></w:lvl></w:abstractNum><w:num "
      "w:numId='1'><w:abstractNumId w:val='1'/></w:num>";
  Letter letter({.styles = wordStyle("paragraph", "P", "<w:next w:val='P'/><w:link w:val='C'/>") +
                           wordStyle("paragraph", "Q", basedOn("P") + "<w:next w:val='P'/>") +
                           wordStyle("character", "C", "<w:link w:val='P'/>"),
                 .body = "<w:p><w:pPr><w:pStyle w:val='P'/><w:pPrChange><w:pPr><w:pStyle w:val='P'/></w:pPr>"
                         "</w:pPrChange></w:pPr></w:p><mc:AlternateContent><mc:Choice Requires='x'><w:p><w:pPr>"
                         "<w:pStyle w:val='P'/></w:pPr></w:p></mc:Choice></mc:AlternateContent>",
                 .numbering = list,
                 .settings = "<w:clickAndTypeStyle w:val='P'/>"});
  const std::pair<std::string, std::string> followed("w:val='P'", "w:val='NewName'");
  letter.expect(
      [](DocumentEditor& editor) { editor.rename(editor.style("P"), "New Name"); },
      {{"styles.xml", {followed, {"w:styleId='P'", "w:styleId='NewName'"}, {"w:val='P name'", "w:val='New Name'"}}},
       {"document.xml", {followed}},
       {"numbering.xml", {followed}},
       {"settings.xml", {followed}}});
  EXPECT_THAT(letter.refusal([](DocumentEditor& editor) { editor.rename(editor.style("list:num-1"), "X"); }),
              testing::HasSubstr("number"));
}

TEST(EditableWordDocumentTest, MergesRemovesAndMovesStyles) {
  Letter letter({.styles = wordStyle("paragraph", "N", {}, " w:default='1'") +
                           wordStyle("paragraph", "P", "<w:pPr><w:keepNext/></w:pPr>") +
                           wordStyle("paragraph", "Q", basedOn("P") + "<w:pPr><w:jc w:val='both'/></w:pPr>") +
                           wordStyle("character", "C", "<w:rPr><w:b/></w:rPr>"),
                 .body = "<w:p/><w:p><w:pPr><w:pStyle w:val='Q'/><w:keepLines/></w:pPr><w:r><w:rPr><w:rStyle "
                         "w:val='C'/></w:rPr></w:r></w:p>"});
  const Letter bold({.styles = wordStyle("paragraph", "P", "<w:rPr><w:b/></w:rPr>") +
                               wordStyle("character", "C", "<w:rPr><w:b/></w:rPr>"),
                     .body = "<w:p><w:pPr><w:pStyle w:val='P'/></w:pPr><w:r><w:rPr><w:rStyle w:val='C'/></w:rPr></w:r>"
                             "</w:p>"});
  const std::string q = wordStyle("paragraph", "Q", basedOn("P") + "<w:pPr><w:jc w:val='both'/></w:pPr>");
  const std::string bare = q.substr(0, q.size() - 1);
  letter.expect([](DocumentEditor& editor) { editor.merge(editor.style("Q"), editor.style("P")); },
                {{"styles.xml", {{bare, ""}}}, {"document.xml", {{"w:val='Q'", "w:val='P'"}}}});
  letter.expect([](DocumentEditor& editor) { editor.remove(editor.style("Q"), KeepLook::yes); },
                {{"styles.xml", {{bare, ""}}},
                 {"document.xml", {{"w:val='Q'/><w:keepLines/>", "w:val='P'/><w:keepLines/><w:jc w:val=\"both\"/>"}}}});
  letter.expect([](DocumentEditor& editor) { editor.reparent(editor.style("Q"), nullptr, KeepLook::yes); },
                {{"styles.xml", {{"<w:basedOn w:val='P'/><w:pPr>", "<w:pPr><w:keepNext/>"}}}});
  letter.expect([](DocumentEditor& editor) { editor.remove(editor.style("C"), KeepLook::yes); },
                {{"styles.xml",
                  {{"<w:style w:type='character' w:styleId='C'><w:name w:val='C name'/><w:rPr><w:b/>"
                    "</w:rPr></w:style>",
                    ""}}},
                 {"document.xml", {{"<w:rStyle w:val='C'/>", "<w:b/>"}}}});
  EXPECT_THAT(bold.refusal([](DocumentEditor& editor) { editor.remove(editor.style("C"), KeepLook::yes); }),
              testing::HasSubstr("text.w.b is absolute in direct formatting"));
}

TEST(EditableWordDocumentTest, CleanupKeepsWhatAnyPartUses) {
  std::string styles =
      "<w:latentStyles><w:lsdException w:name='Seldom name'/><w:lsdException w:name='Gone'/>"
      "</w:latentStyles>";
  for (const char* id : {"Linked", "Next", "Numbered", "Settings", "Tracked", "Seldom", "Unused"})
    styles += wordStyle("paragraph", id);
  styles += wordStyle("paragraph", "P", "<w:next w:val='Next'/><w:link w:val='C'/>", " w:default='1'");
  styles += wordStyle("character", "C", "<w:link w:val='Linked'/>");
  Letter letter({.styles = styles,
                 .body = "<w:p><w:pPr><w:pPrChange><w:pPr><w:pStyle w:val='Tracked'/></w:pPr></w:pPrChange></w:pPr>"
                         "</w:p>",
                 .numbering =
                     "<w:abstractNum w:abstractNumId='1'><w:lvl w:ilvl='0'><w:pStyle w:val='Numbered'/></w:lvl>"
                     "</w:abstractNum>",
                 .settings = "<w:clickAndTypeStyle w:val='Settings'/>"});
  const std::string unused = wordStyle("paragraph", "Unused");
  const std::string seldom = wordStyle("paragraph", "Seldom");
  const std::pair<std::string, std::string> gone(unused.substr(0, unused.size() - 1), "");
  letter.expect([](DocumentEditor& editor) { editor.cleanup({}); }, {{"styles.xml", {gone}}});
  letter.expect([](DocumentEditor& editor) { editor.cleanup({.trimsLatent = true}); },
                {{"styles.xml",
                  {gone,
                   {seldom.substr(0, seldom.size() - 1), ""},
                   {"<w:lsdException w:name='Seldom name'/>", ""},
                   {"<w:lsdException w:name='Gone'/>", ""}}}});
}

TEST(EditableWordDocumentTest, SavesPackagesEntryByEntryAndRefusesSignedOnes) {
  const TemporaryFolder folder;
  auto entries = wordEntries({.styles = wordStyle("paragraph", "P"), .body = "<w:p/>"});
  entries.emplace_back("word/vbaProject.bin", std::string("\0macro\xff", 7));
  const std::string path = folder.zip("a.docm", entries);
  const auto change = [](EditableDocument& document) {
    document.document().undoManager()->performInGroup([&] { set(document.editor(), "P", {"text.w.sz=9pt"}); });
  };
  const auto document = EditableWordDocument::open(path);
  change(*document);
  document->save({.out = folder / "b.docm"});
  const std::string bytes = contentOf((folder / "b.docm").string());
  EXPECT_EQ(zipEntry(bytes, "word/vbaProject.bin", "b"), std::string("\0macro\xff", 7));
  EXPECT_EQ(zipEntryNames(bytes, "b"), zipEntryNames(contentOf(path), "a"));
  entries.emplace_back("_xmlsignatures/sig1.xml", "<x/>");
  const auto signedOne = EditableWordDocument::open(folder.zip("c.docx", entries));
  change(*signedOne);
  EXPECT_THROW(signedOne->save({.out = folder / "d.docx", .dropsSignature = true}), EditError);
  EXPECT_FALSE(std::filesystem::exists(folder / "d.docx"));
}

}  // namespace
