// SPDX-License-Identifier: MIT
#include <opendocument/writing/EditableOpenDocument.h>

#include <document/package/ZipRewriter.h>
#include <document/styles/PropertyRules.h>
#include <platform/NSUndoManager.h>

#include <tests/Files.h>
#include <tests/TestDocuments.h>

#include <functional>

namespace {

using namespace zt;
using namespace zt::test;

const std::vector<std::string> kDocuments = {
    "01-tiny-blank-page",         "02-tiny-address-label.fodt", "03-small-invoice.fodt",
    "04-medium-outline-exporter", "05-medium-markup-writer",    "06-medium-letter-template",
    "07-medium-docx-default",     "08-medium-font-features",    "09-large-api-reference"};

using Edit = std::function<void(DocumentEditor&)>;

std::vector<std::string> bytesOf(EditableDocument& document) {
  std::vector<std::string> bytes;
  for (const XmlPart& part : document.writtenParts()) bytes.push_back(part.bytes);
  return bytes;
}

// What an edit makes of a flat document; undo has to bring back the first bytes, redo the same result.
std::string edited(const std::string& text, const Edit& edit) {
  const auto document = EditableOpenDocument::fromFlatText(text, "a.fodt");
  NSUndoManager& undo = *document->document().undoManager();
  undo.performInGroup([&] { edit(document->editor()); });
  const std::string result = document->writtenParts().front().bytes;
  undo.undo();
  EXPECT_EQ(document->writtenParts().front().bytes, text);
  undo.redo();
  EXPECT_EQ(document->writtenParts().front().bytes, result);
  return result;
}

std::string refusal(const std::string& text, const Edit& edit) {
  try {
    const auto document = EditableOpenDocument::fromFlatText(text, "a.fodt");
    document->document().undoManager()->performInGroup([&] { edit(document->editor()); });
    (void)document->writtenParts();
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

// The text with one piece replaced by another, as often as it is there.
std::string with(std::string text, const std::vector<std::pair<std::string, std::string>>& pieces) {
  for (const auto& [before, after] : pieces) {
    EXPECT_NE(text.find(before), std::string::npos) << before;
    for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos; at += after.size())
      text.replace(at, before.size(), after);
  }
  return text;
}

void set(DocumentEditor& editor, const std::string& style, const std::string& assignment) {
  OdfStyle& target = editor.style(style);
  editor.set(target, {editor.assignment(target, assignment)});
}

std::string letter() {
  return flat(
      "<!-- named --><style:style style:name='Body'   style:family='paragraph' style:next-style-name=\"Body\">\n"
      "  <style:paragraph-properties fo:margin=\"1cm\"/><style:text-properties fo:color='#000000' "
      "fo:font-size=\"10pt\"/>"
      "</style:style>" +
          paragraphStyle("Head", " style:parent-style-name=\"Body\" style:next-style-name=\"Body\"/>") +
          paragraphStyle("Odd",
                         " style:parent-style-name=\"Body\"><style:map style:condition=\"x\" "
                         "style:apply-style-name=\"Head\"/></style:style>") +
          paragraphStyle("Unused"),
      paragraphStyle("P1",
                     " style:parent-style-name=\"Head\"><style:text-properties fo:font-size=\"120%\"/></style:style>") +
          paragraphStyle(
              "P2", " style:parent-style-name=\"Head\"><style:text-properties   fo:font-size='120%'/></style:style>"),
      "<text:p text:style-name=\"P1\"/><text:p text:style-name='P2'/><text:h text:style-name=\"Head\">P2 Head</text:h>"
      "<text:p text:style-name=\"Odd\"/><?pi P2?>");
}

TEST(EditableDocumentTest, WritesWhatNobodyChangedByteForByteInAllForms) {
  const TemporaryFolder folder;
  for (const std::string& name : kDocuments) {
    SCOPED_TRACE(name);
    const auto source = dataPath(name);
    const auto document = EditableOpenDocument::open(source);
    const std::vector<XmlPart> parts = document->writtenParts();
    if (parts.size() == 1 && parts.front().name == "flat") {
      document->save({.out = folder / name});
      EXPECT_EQ(contentOf((folder / name).string()), contentOf(source.string()));
      continue;
    }
    std::vector<std::pair<std::string, std::string>> entries = {
        {"mimetype", "application/vnd.oasis.opendocument.text"}};
    for (const XmlPart& part : parts) {
      EXPECT_EQ(part.bytes, contentOf((source / part.name).string()));
      entries.emplace_back(part.name, part.bytes);
    }
    const std::string packed = folder.zip(name + ".odt", entries);
    EditableOpenDocument::open(packed)->save({.out = folder / (name + "-again.odt")});
    EXPECT_TRUE(contentOf(packed) == contentOf((folder / (name + "-again.odt")).string()));
    document->save({.out = folder / name});
    for (const XmlPart& part : parts) EXPECT_EQ(contentOf((folder / name / part.name).string()), part.bytes);
  }
}

TEST(EditableDocumentTest, ChangesOnlyTheValueThatIsSet) {
  const std::string text = letter();
  EXPECT_EQ(edited(text, [](auto& editor) { set(editor, "Body", "text.fo.font-size=11pt"); }),
            with(text, {{"fo:font-size=\"10pt\"", "fo:font-size=\"11pt\""}}));
  EXPECT_EQ(edited(text, [](auto& editor) { set(editor, "Body", "text.fo.color"); }),
            with(text, {{" fo:color='#000000'", ""}}));
  EXPECT_EQ(edited(text, [](auto& editor) { set(editor, "Unused", "paragraph.fo.text-align=center"); }),
            with(text, {{"\"Unused\" style:family=\"paragraph\"/>",
                         "\"Unused\" style:family=\"paragraph\"><style:paragraph-properties "
                         "fo:text-align=\"center\"/></style:style>"}}));
  EXPECT_EQ(
      edited(text, [](auto& editor) { set(editor, "Body", "paragraph.fo.margin-left=2cm"); }),
      with(text, {{" fo:margin=\"1cm\"",
                   " fo:margin-left=\"2cm\" fo:margin-right=\"1cm\" fo:margin-top=\"1cm\" fo:margin-bottom=\"1cm\""}}));
  EXPECT_THAT(refusal(text, [](auto& editor) { set(editor, "Body", "text.fo.color="); }),
              testing::HasSubstr("explicitly no value"));
}

TEST(EditableDocumentTest, NamesFollowEverywhere) {
  const std::string text = letter();
  EXPECT_EQ(
      edited(text, [](auto& editor) { editor.rename(editor.style("Head"), "My head"); }),
      with(
          text,
          {{"style:name=\"Head\"", "style:name=\"My_20_head\""},
           {"\"My_20_head\" style:family=\"paragraph\" style:parent-style-name=\"Body\" style:next-style-name=\"Body\"",
            "\"My_20_head\" style:family=\"paragraph\" style:parent-style-name=\"Body\" style:next-style-name=\"Body\" "
            "style:display-name=\"My head\""},
           {"style:parent-style-name=\"Head\"", "style:parent-style-name=\"My_20_head\""},
           {"apply-style-name=\"Head\"", "apply-style-name=\"My_20_head\""},
           {"text:style-name=\"Head\"", "text:style-name=\"My_20_head\""}}));
  EXPECT_EQ(edited(text, [](auto& editor) { editor.rename(editor.style("Body"), "B"); }),
            with(text, {{"'Body'", "'B'"}, {"\"Body\"", "\"B\""}}));
  EXPECT_THAT(refusal(text, [](auto& editor) { editor.rename(editor.style("Head"), "Body"); }),
              testing::HasSubstr("already"));
  EXPECT_THAT(refusal(text, [](auto& editor) { editor.rename(editor.style("P1"), "X"); }),
              testing::HasSubstr("no named style"));
}

TEST(EditableDocumentTest, MergesAndRemovesStyles) {
  const std::string text = letter();
  const std::string second = paragraphStyle(
      "P2", " style:parent-style-name=\"Head\"><style:text-properties   fo:font-size='120%'/></style:style>");
  const std::string element = second.substr(0, second.size() - 1);
  EXPECT_EQ(edited(text, [](auto& editor) { EXPECT_EQ(editor.dedupe({}).size(), 1u); }),
            with(text, {{element, ""}, {"'P2'", "'P1'"}}));
  EXPECT_EQ(edited(text, [](auto& editor) { EXPECT_EQ(editor.cleanup({}).size(), 1u); }),
            with(text, {{"<style:style style:name=\"Unused\" style:family=\"paragraph\"/>", ""}}));
  EXPECT_EQ(edited(text, [](auto& editor) { editor.merge(editor.style("P2"), editor.style("Head")); }),
            with(text, {{element, ""}, {"'P2'", "'Head'"}}));
  EXPECT_EQ(
      edited(text, [](auto& editor) { editor.reparent(editor.style("Odd"), &editor.style("Unused"), KeepLook::no); }),
      with(text, {{"\"Odd\" style:family=\"paragraph\" style:parent-style-name=\"Body\"",
                   "\"Odd\" style:family=\"paragraph\" style:parent-style-name=\"Unused\""}}));
  // Its uses and children fall to the parent, with their look as what they set themselves.
  const std::string kept = edited(text, [](auto& editor) { editor.remove(editor.style("Body"), KeepLook::yes); });
  EXPECT_THAT(kept, testing::HasSubstr(
                        "\"Head\" style:family=\"paragraph\"><style:paragraph-properties fo:margin-left=\"1cm\""));
  EXPECT_THAT(kept, testing::Not(testing::HasSubstr("Body")));
}

TEST(EditableDocumentTest, PutsSeveralElementsIntoOneThatWasEmpty) {
  const std::string text = flat(paragraphStyle("Body",
                                               "><style:paragraph-properties fo:margin-top=\"1cm\"><style:tab-stops/>"
                                               "<style:drop-cap/></style:paragraph-properties></style:style>") +
                                    paragraphStyle("Quote",
                                                   " style:parent-style-name=\"Body\"><style:paragraph-properties "
                                                   "fo:margin-left=\"1cm\"/></style:style>"),
                                {}, "<text:p text:style-name=\"Quote\"/>");
  EXPECT_THAT(edited(text, [](auto& editor) { editor.remove(editor.style("Body"), KeepLook::yes); }),
              testing::HasSubstr("<style:paragraph-properties fo:margin-left=\"1cm\" fo:margin-top=\"1cm\">"
                                 "<style:tab-stops/><style:drop-cap/></style:paragraph-properties></style:style>"));
}

TEST(EditableDocumentTest, RefusesWhatIsNotWhole) {
  const TemporaryFolder folder;
  const std::string cut = folder.write("cut.fodt", letter().substr(0, letter().size() - 30));
  EXPECT_THROW((void)EditableOpenDocument::open(cut), ReadError);
  const std::string vendor =
      with(letter(), {{"<text:p text:style-name=\"Odd\"/>", "<text:p x:like=\"Unused\" xmlns:x=\"urn:x\"/>"}});
  EXPECT_THAT(refusal(vendor, [](auto& editor) { editor.remove(editor.style("Unused"), KeepLook::no); }),
              testing::HasSubstr("what that means is not known"));
  EXPECT_EQ(edited(vendor, [](auto& editor) { EXPECT_EQ(editor.cleanup({}).size(), 1u); }).find("Odd"),
            std::string::npos);
}

TEST(EditableDocumentTest, SavesOnlyOverDocumentsOfItsForm) {
  const TemporaryFolder folder;
  const std::vector<std::pair<std::string, std::string>> entries = {
      {"mimetype", "application/vnd.oasis.opendocument.text"},
      {"styles.xml", document("document-styles", paragraphStyle("A"))},
      {"content.xml", document("document-content", "", "", "<text:p text:style-name=\"A\"/>")},
      {"META-INF/documentsignatures.xml", "<s/>"}};
  const std::string path = folder.zip("a.odt", entries);
  const auto save = [&](const SaveOptions& options) -> std::string {
    try {
      const auto document = EditableOpenDocument::open(path);
      set(document->editor(), "A", "text.fo.font-size=11pt");
      document->save(options);
      return {};
    } catch (const std::exception& error) {
      return error.what();
    }
  };
  const std::string before = contentOf(path);
  EXPECT_THAT(save({.out = path}), testing::HasSubstr("--in-place"));
  EXPECT_THAT(save({.out = folder.write("letter.txt", "Dear")}), testing::HasSubstr("--force"));
  EXPECT_THAT(save({.out = folder / "b.odt"}), testing::HasSubstr("is signed"));
  EXPECT_EQ(contentOf(path), before);
  EXPECT_EQ(save({.out = path, .isInPlace = true, .dropsSignature = true, .backupSuffix = ".bak"}), "");
  EXPECT_EQ(contentOf(path + ".bak"), before);
  const std::string after = contentOf(path);
  EXPECT_EQ(zipEntryNames(after, path).size(), 3u);
  EXPECT_EQ(zipEntry(after, "content.xml", path), entries[2].second);
  EXPECT_THAT(zipEntry(after, "styles.xml", path), testing::HasSubstr("fo:font-size=\"11pt\""));
}

/// The style of a kind that the text uses most, and that gives no list; none where it uses none.
OdfStyle* mostUsed(const ZTDocument& document, StyleOrigin::Kind kind) {
  OdfStyle* found = nullptr;
  for (const Ref<OdfStyle>& style : document.readStyles()) {
    const bool fits = document.originOf(*style)->kind == kind && style->family() == StyleFamily::paragraph &&
                      style->usageCount() != 0 && style->p_overrideValueForProperty(keys::listStyle()) == nullptr &&
                      !modelEditingRules().isUsedUnnamed(*style);
    if (fits && (found == nullptr || style->usageCount() > found->usageCount())) found = style.get();
  }
  return found;
}

TEST(EditableDocumentTest, EditsTheRealDocumentsAndUndoesIt) {
  std::size_t done = 0;
  for (const std::string& name : kDocuments) {
    SCOPED_TRACE(name);
    const auto document = EditableOpenDocument::open(dataPath(name));
    const std::vector<std::string> first = bytesOf(*document);
    NSUndoManager& undo = *document->document().undoManager();
    OdfStyle* named = mostUsed(document->document(), StyleOrigin::Kind::named);
    OdfStyle* automatic = mostUsed(document->document(), StyleOrigin::Kind::automatic);
    std::vector<Edit> edits = {[](auto& editor) { (void)editor.dedupe({.mergesLists = true}); },
                               [](auto& editor) { (void)editor.dedupe({.ignoresRevisionMarks = true}); },
                               [](auto& editor) {
                                 (void)editor.cleanup({});
                                 (void)editor.cleanupFonts();
                               }};
    if (named != nullptr) {
      edits.insert(
          edits.end(),
          {[=](auto& editor) { editor.rename(*named, "A new name"); }, [=](auto& editor) { editor.demote(*named); },
           [=](auto& editor) { editor.reparent(*named, nullptr, KeepLook::yes); },
           [=](auto& editor) {
             editor.set(*named, {editor.assignment(*named, "text.fo.font-size=33pt")}, KeepLook::yes);
           }});
    }
    if (automatic != nullptr) edits.emplace_back([=](auto& editor) { (void)editor.promote(*automatic, "A new name"); });
    for (const Edit& edit : edits) {
      undo.performInGroup([&] { edit(document->editor()); });
      EXPECT_NO_THROW(done += bytesOf(*document) != first ? 1U : 0U) << &edit - edits.data();
      if (undo.canUndo()) undo.undo();
      EXPECT_TRUE(bytesOf(*document) == first) << &edit - edits.data();
    }
  }
  EXPECT_GE(done, 40U);  // few documents have nothing to dedupe or to clean up
}

TEST(EditableDocumentTest, WritesTheSamePartsInEachForm) {
  const TemporaryFolder folder;
  const std::filesystem::path source = dataPath("05-medium-markup-writer");
  const std::string packed = folder.zip("a.odt", {{"mimetype", "application/vnd.oasis.opendocument.text"},
                                                  {"content.xml", contentOf((source / "content.xml").string())},
                                                  {"styles.xml", contentOf((source / "styles.xml").string())},
                                                  {"Pictures/a.png", "no picture"}});
  for (const std::filesystem::path& path : {source, std::filesystem::path(packed)}) {
    const auto document = EditableOpenDocument::open(path);
    (void)document->editor().cleanup({});
    document->save({.out = folder / (path.filename().string() + "-out")});
  }
  const std::string out = contentOf((folder / "a.odt-out").string());
  EXPECT_EQ(zipEntry(out, "Pictures/a.png", "out"), "no picture");
  for (const char* part : {"styles.xml", "content.xml"})
    EXPECT_TRUE(zipEntry(out, part, "out") == contentOf((folder / "05-medium-markup-writer-out" / part).string()));
  const auto folded = EditableOpenDocument::open(source);
  EXPECT_THROW(folded->save({.out = folder / "05-medium-markup-writer-out"}), EditError);  // it holds a document
  EXPECT_NE(zipEntry(out, "styles.xml", "out"), contentOf((source / "styles.xml").string()));
}

}  // namespace
