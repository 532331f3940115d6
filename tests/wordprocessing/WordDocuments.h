// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Packages of WordprocessingML made from strings.

#include <wordprocessing/reading/WordImporter.h>

#include <tests/TestDocuments.h>

#include <string>
#include <utility>
#include <vector>

namespace zt::test {

inline const std::string kWord =
    " xmlns:w='http://schemas.openxmlformats.org/wordprocessingml/2006/main'"
    " xmlns:mc='http://schemas.openxmlformats.org/markup-compatibility/2006'";

/// The parts of a document, as far as a test gives them.
struct WordParts {
  std::string styles = {};
  std::string body = {};
  std::string numbering = {};
  std::string theme = {};
  std::string settings = {};
};

inline std::string relationships(const std::vector<std::pair<std::string, std::string>>& targetsByType) {
  std::string text = "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>";
  for (const auto& [type, target] : targetsByType) {
    text += "<Relationship Type='http://schemas.openxmlformats.org/officeDocument/2006/relationships/" + type +
            "' Target='" + target + "'/>";
  }
  return text + "</Relationships>";
}

inline const std::string kContentTypes =
    "<Types xmlns='http://schemas.openxmlformats.org/package/2006/content-types'><Override "
    "PartName='/word/document.xml' "
    "ContentType='application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml'/></Types>";

/// The entries of a package; the first style, paragraph or list stands on line 2 of its part.
inline std::vector<std::pair<std::string, std::string>> wordEntries(const WordParts& parts) {
  return {
      {"[Content_Types].xml", kContentTypes},
      {"_rels/.rels", relationships({{"officeDocument", "word/document.xml"}})},
      {"word/_rels/document.xml.rels", relationships({{"styles", "styles.xml"},
                                                      {"numbering", "numbering.xml"},
                                                      {"theme", "/word/theme.xml"},
                                                      {"settings", "settings.xml"}})},
      {"word/document.xml", "<w:document" + kWord + "><w:body>\n" + parts.body + "</w:body></w:document>"},
      {"word/styles.xml", "<w:styles" + kWord + ">\n" + parts.styles + "</w:styles>"},
      {"word/numbering.xml", "<w:numbering" + kWord + ">\n" + parts.numbering + "</w:numbering>"},
      {"word/settings.xml", "<w:settings" + kWord + ">\n" + parts.settings + "</w:settings>"},
      {"word/theme.xml", "<a:theme xmlns:a='http://schemas.openxmlformats.org/drawingml/2006/main'><a:themeElements>" +
                             parts.theme + "</a:themeElements></a:theme>"}};
}

inline ImportedWord importParts(const WordParts& parts) {
  const TemporaryFolder folder;
  return importWord(WordDocument::read(WordPackage::read(folder.zip("x.docx", wordEntries(parts)))));
}

inline std::string wordStyle(const std::string& type, const std::string& id, const std::string& rest = {},
                             const std::string& attributes = {}) {
  return "<w:style w:type='" + type + "' w:styleId='" + id + "'" + attributes + "><w:name w:val='" + id + " name'/>" +
         rest + "</w:style>\n";
}

inline std::string basedOn(const std::string& id) { return "<w:basedOn w:val='" + id + "'/>"; }

}  // namespace zt::test
