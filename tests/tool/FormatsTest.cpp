// SPDX-License-Identifier: MIT

// The same promises for every format that is read and written back.

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <tool/Formats.h>

#include <platform/NSUndoManager.h>

#include <tests/Files.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>
#include <tests/wordprocessing/WordDocuments.h>

#include <functional>

namespace {

using namespace zt;
using namespace zt::test;

/// A paragraph style of a scene, and paragraphs of the text: what every format can say.
struct SceneStyle {
  std::string id;
  std::string base = {};
  int points = 0;  // of the font; 0 for none
};
struct SceneText {
  std::string style;
  bool isCentred = false;  // by direct formatting
};
struct Scene {
  std::vector<SceneStyle> styles;
  std::vector<SceneText> text;
};

/// How a format writes scenes, and what it calls their properties.
struct FormatCase {
  std::string name;
  std::string size;
  std::string alignment;
  std::function<std::string(const TemporaryFolder&, const Scene&)> write;
};

std::string writeOpenDocument(const TemporaryFolder& folder, const Scene& scene) {
  std::string named;
  for (const SceneStyle& style : scene.styles) {
    named += paragraphStyle(
        style.id,
        (style.base.empty() ? "" : " style:parent-style-name=\"" + style.base + "\"") + ">" +
            (style.points == 0 ? ""
                               : "<style:text-properties fo:font-size=\"" + std::to_string(style.points) + "pt\"/>") +
            "</style:style>");
  }
  std::string automatic;
  std::string text;
  for (std::size_t index = 0; index < scene.text.size(); ++index) {
    const SceneText& each = scene.text[index];
    const std::string own = "P" + std::to_string(index + 1);
    if (each.isCentred) {
      automatic += paragraphStyle(own, " style:parent-style-name=\"" + each.style +
                                           "\"><style:paragraph-properties fo:text-align=\"center\"/></style:style>");
    }
    text += "<text:p text:style-name=\"" + (each.isCentred ? own : each.style) + "\"/>";
  }
  return folder.write("scene.fodt", flat(named, automatic, text));
}

std::string writeWord(const TemporaryFolder& folder, const Scene& scene) {
  WordParts parts;
  for (const SceneStyle& style : scene.styles) {
    parts.styles +=
        "<w:style w:type='paragraph' w:styleId='" + style.id + "'><w:name w:val='" + style.id + "'/>" +
        (style.base.empty() ? "" : basedOn(style.base)) +
        (style.points == 0 ? "" : "<w:rPr><w:sz w:val='" + std::to_string(style.points * 2) + "'/></w:rPr>") +
        "</w:style>\n";
  }
  for (const SceneText& each : scene.text) {
    parts.body += "<w:p><w:pPr><w:pStyle w:val='" + each.style + "'/>" +
                  (each.isCentred ? "<w:jc w:val='center'/>" : "") + "</w:pPr></w:p>";
  }
  return folder.zip("scene.docx", wordEntries(parts));
}

class FormatsTest : public testing::TestWithParam<FormatCase> {
 protected:
  [[nodiscard]] std::string write(const Scene& scene) const { return GetParam().write(mFolder, scene); }
  [[nodiscard]] std::string out() const { return (mFolder / "out").string(); }

  [[nodiscard]] static std::string size(const ZTDocument& document, const std::string& id) {
    return value(document.namedStyle("paragraph", id), GetParam().size);
  }
  [[nodiscard]] static std::string value(const OdfStyle* style, const std::string& key) {
    if (style == nullptr) return "no style";
    const Ref<NSObject> found = style->valueForProperty(PropertyKey(key));
    return found ? valueText(found.get(), true) : "";
  }
  static std::vector<std::string> codes(const ZTDocument& document) {
    std::vector<std::string> all;
    for (const Finding& finding : document.findings) all.push_back(finding.code);
    return all;
  }

  /// The document that an edit leaves on the disk. Undo has to bring the first bytes back.
  [[nodiscard]] Ref<ZTDocument> edited(const Scene& scene, const std::function<void(DocumentEditor&)>& edit) const {
    const auto document = openForEditing(write(scene));
    const auto bytes = [&] {
      std::vector<std::string> all;
      for (const XmlPart& part : document->writtenParts()) all.push_back(part.bytes);
      return all;
    };
    const std::vector<std::string> before = bytes();
    NSUndoManager& undo = *document->document().undoManager();
    undo.performInGroup([&] { edit(document->editor()); });
    document->save({.out = out(), .isForced = true});
    undo.undo();
    EXPECT_EQ(bytes(), before);
    return readDocument(out());
  }

  TemporaryFolder mFolder;
};

const Scene kLetter = {{{"Body", "", 10}, {"Head", "Body", 14}, {"Quote", "Body"}, {"Unused", "Quote"}},
                       {{"Body"}, {"Head"}, {"Quote", true}, {"Quote", true}, {"Quote"}}};

TEST_P(FormatsTest, StylesInheritAndTextUsesThem) {
  const Ref<ZTDocument> document = readDocument(write(kLetter));
  EXPECT_THAT(codes(*document), testing::IsEmpty());
  EXPECT_EQ(size(*document, "Quote"), "10pt");
  EXPECT_EQ(size(*document, "Head"), "14pt");
  EXPECT_EQ(document->namedStyle("paragraph", "Head")->parent(), document->namedStyle("paragraph", "Body"));
  EXPECT_EQ(document->namedStyle("paragraph", "Unused")->usageCount(), 0);
  EXPECT_GT(document->namedStyle("paragraph", "Head")->usageCount(), 0);
  const OdfStyle* centred =
      document->stylesCalled("P1").empty() ? document->stylesCalled("P3").at(0) : document->stylesCalled("P1").at(0);
  EXPECT_EQ(value(centred, GetParam().alignment), "center");
  EXPECT_EQ(value(centred, GetParam().size), "10pt");
  EXPECT_FALSE(document->undoManager()->canUndo());
}

TEST_P(FormatsTest, WhatIsUncleanGivesOneFindingEachAndNothingIsLost) {
  const Ref<ZTDocument> document = readDocument(
      write({{{"A", "C"}, {"B", "A"}, {"C", "B", 9}, {"Lost", "Nowhere", 8}, {"Twice", "", 7}, {"Twice", "", 6}}, {}}));
  EXPECT_THAT(codes(*document), testing::UnorderedElementsAre("parent-loop", "missing-parent", "repeated-style"));
  EXPECT_EQ(size(*document, "Lost"), "8pt");
  EXPECT_EQ(size(*document, "C"), "9pt");
}

TEST_P(FormatsTest, ChainsMayBeLong) {
  Scene scene{{{"s0", "", 15}}, {{"s9999"}}};
  for (int index = 1; index < 10'000; ++index)
    scene.styles.push_back({"s" + std::to_string(index), "s" + std::to_string(index - 1)});
  const Ref<ZTDocument> document = readDocument(write(scene));
  EXPECT_THAT(codes(*document), testing::IsEmpty());
  EXPECT_EQ(size(*document, "s9999"), "15pt");
}

TEST_P(FormatsTest, WritesWhatNobodyChangedByteForByte) {
  const std::string path = write(kLetter);
  openForEditing(path)->save({.out = out()});
  EXPECT_TRUE(contentOf(out()) == contentOf(path));
}

TEST_P(FormatsTest, EditsAreReadAgainAsTheyWereMade) {
  Ref<ZTDocument> document = edited(kLetter, [](DocumentEditor& editor) {
    OdfStyle& body = editor.style("Body");
    editor.set(body, {editor.assignment(body, GetParam().size + "=11pt")});
  });
  EXPECT_EQ(size(*document, "Quote"), "11pt");
  document = edited(kLetter, [](DocumentEditor& editor) { editor.rename(editor.style("Body"), "Plain"); });
  EXPECT_EQ(size(*document, "Quote"), "10pt");
  EXPECT_EQ(document->namedStyle("paragraph", "Body"), nullptr);
  EXPECT_GT(document->namedStyle("paragraph", "Plain")->usageCount(), 0);
  document = edited(kLetter, [](DocumentEditor& editor) { editor.merge(editor.style("Quote"), editor.style("Head")); });
  EXPECT_EQ(document->namedStyle("paragraph", "Quote"), nullptr);
  EXPECT_EQ(size(*document, "Unused"), "14pt");
  document = edited(kLetter, [](DocumentEditor& editor) { editor.remove(editor.style("Quote"), KeepLook::no); });
  EXPECT_EQ(document->namedStyle("paragraph", "Unused")->parent(), document->namedStyle("paragraph", "Body"));
  document = edited(kLetter, [](DocumentEditor& editor) {
    editor.reparent(editor.style("Quote"), &editor.style("Head"), KeepLook::yes);
  });
  EXPECT_EQ(size(*document, "Quote"), "10pt");
  EXPECT_EQ(document->namedStyle("paragraph", "Quote")->parent(), document->namedStyle("paragraph", "Head"));
  document = edited(kLetter, [](DocumentEditor& editor) { editor.cleanup({}); });
  EXPECT_EQ(document->namedStyle("paragraph", "Unused"), nullptr);
  EXPECT_NE(document->namedStyle("paragraph", "Quote"), nullptr);
  EXPECT_THAT(codes(*document), testing::IsEmpty());
}

TEST_P(FormatsTest, EveryCommandTakesIt) {
  const std::string path = write(kLetter);
  const std::string size = GetParam().size;
  const std::string before = contentOf(path);
  for (const std::vector<std::string>& arguments : std::initializer_list<std::vector<std::string>>{
           {"explain", path, "Quote", size},
           {"tree", path},
           {"show", path},
           {"stats", path},
           {"validate", path},
           {"vary", path, "Body", size + "=9pt"},
           {"dedupe", path, "--dry-run"},
           {"cleanup", path},
           {"set", path, "Body", size + "=9pt", "-o", out()},
           {"rename", path, "Body", "Plain", "-o", out(), "--force"},
           {"merge", path, "Quote", "Body", "-o", out(), "--force"},
           {"remove", path, "Quote", "-o", out(), "--force"},
           {"reparent", path, "Quote", "Head", "-o", out(), "--force"},
           {"edit", path, mFolder.write("script", "rename Body Plain\ncleanup\n"), "-o", out(), "--force"}}) {
    const ToolRun run = runTool(arguments);
    EXPECT_LE(run.code, 1) << arguments.front() << ": " << run.err;
  }
  EXPECT_EQ(contentOf(path), before);
  EXPECT_EQ(readDocument(out())->namedStyle("paragraph", "Unused"), nullptr);
}

TEST_P(FormatsTest, AFileThatIsCutIsNeverWritten) {
  const std::string path = write(kLetter);
  const std::string bytes = contentOf(path);
  for (const std::size_t kept : {bytes.size() / 2, bytes.size() - 10}) {
    const std::string cut = mFolder.write("cut", bytes.substr(0, kept));
    EXPECT_ANY_THROW(openForEditing(cut)->save({.out = out()})) << kept;
    EXPECT_FALSE(std::filesystem::exists(out()));
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, FormatsTest,
                         testing::Values(FormatCase{"OpenDocument", "text.fo.font-size", "paragraph.fo.text-align",
                                                    writeOpenDocument},
                                         FormatCase{"WordprocessingML", "text.w.sz", "paragraph.w.jc", writeWord}),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
