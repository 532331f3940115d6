// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What the parts of a document say about styles, as trees and text: nothing resolved, nothing judged.

#include <document/styles/StyleFamily.h>
#include <wordprocessing/package/WordPackage.h>
#include <wordprocessing/properties/WordElement.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

/// A w:style, w:abstractNum or w:num.
struct RawWordStyle {
  std::size_t part = 0;  ///< index into the document's parts
  WordElement element;
};

/// A style and direct formatting that some text uses together.
struct WordUse {
  StyleFamily family = StyleFamily::paragraph;
  std::string styleId;     ///< empty where the text names none
  WordElement properties;  ///< w:pPr, w:rPr, ... without what is no formatting
  std::size_t part = 0;    ///< of the first
  int line = 0;            ///< of the first
  std::size_t count = 0;
  bool isNameOnly = false;  ///< a place that names the style without being text: tracked changes, controls, settings
};

/// A style that the code of a field names, by the name that people see (STYLEREF, TOC).
struct WordFieldName {
  std::string name;
  std::size_t part = 0;
  int line = 0;
};

/// A paragraph with its runs; all style it has are indices into the uses.
struct WordParagraph {
  std::size_t part = 0;
  int line = 0;
  std::size_t use = kNowhere;
  std::size_t mark = kNowhere;   ///< the formatting of the paragraph mark, if it has any
  std::size_t table = kNowhere;  ///< the innermost table that it stands in
  std::size_t row = 0;
  std::size_t column = 0;
  std::size_t columns = 1;  ///< that its cell spans
  std::vector<std::size_t> runs;
};

/// A table of the text. Columns count in the grid: a cell that spans two takes two.
struct WordTable {
  std::size_t use = kNowhere;
  std::optional<std::string> look;         ///< w:tblLook as one hexadecimal number, none without it
  std::vector<std::size_t> columnsOfRows;  ///< one entry for each row
};

/// Everything that a document says about styles, and where its text uses them.
struct WordDocument {
  struct Part {
    std::string name;
    std::string shown;
  };

  std::string shown;
  std::vector<Part> parts;
  std::vector<WordElement> runDefaults;        ///< w:rPr of w:rPrDefault: one or none
  std::vector<WordElement> paragraphDefaults;  ///< w:pPr of w:pPrDefault: one or none
  std::vector<WordElement> latentStyles;       ///< one or none
  std::size_t stylesPart = kNowhere;
  std::vector<RawWordStyle> styles;
  std::vector<RawWordStyle> abstractLists;
  std::vector<RawWordStyle> lists;
  std::map<std::string, std::string> theme;  ///< "accent1" to "4f81bd", "minorFont.latin" to "Calibri"
  std::size_t themePart = kNowhere;
  std::map<std::string, std::string> colourMapping;  ///< w:clrSchemeMapping: "t1" to "dark1"
  std::vector<WordUse> uses;
  std::unordered_map<std::string, std::size_t> useByKey;  ///< see `useKey`
  std::vector<WordFieldName> fieldNames;
  /// The use of each place that may be formatted, in the order of their starts: paragraphs, their marks behind them,
  /// runs, tables, rows, cells. `kNowhere` for one that has none.
  std::vector<std::size_t> places;
  std::vector<WordParagraph> paragraphs;  ///< in the order of their starts, the main part first
  std::vector<WordTable> tables;
  std::vector<Finding> findings;

  /// Reads all parts. Where one stops being readable, what stood before is kept and a finding tells the place. Throws
  /// `ReadError` if the main part has no root of this format. Linear in the size of the parts.
  static WordDocument read(WordPackage package);
};

}  // namespace zt
