// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/TableParts.h>

#include <platform/NSNumber.h>

#include <charconv>

namespace zt {

namespace {

// The bits of w:tblLook (17.4.56).
struct Look {
  bool hasFirstRow;
  bool hasLastRow;
  bool hasFirstColumn;
  bool hasLastColumn;
  bool hasRowBands;
  bool hasColumnBands;
};

Look lookOf(const WordTable& table) {
  unsigned bits = 0;
  if (table.look) std::from_chars(table.look->data(), table.look->data() + table.look->size(), bits, 16);
  const auto has = [bits](unsigned bit) { return (bits & bit) != 0; };
  return {has(0x20), has(0x40), has(0x80), has(0x100), !has(0x200), !has(0x400)};
}

// How many rows or columns a band takes; 0 where the style has none.
std::size_t bandSize(const OdfStyle& style, const char* key) {
  const Ref<NSObject> value = style.valueForProperty(PropertyKey(key));
  const NSNumber* number = NSNumber::from(value.get());
  if (number == nullptr || !number->isInteger()) return 1;
  return number->integerValue() > 0 ? static_cast<std::size_t>(number->integerValue()) : 0;
}

}  // namespace

std::vector<PropertyKey> tablePartsOf(const WordDocument& document, const WordParagraph& paragraph,
                                      const OdfStyle* tableStyle) {
  std::vector<PropertyKey> parts;
  if (paragraph.table == kNowhere || tableStyle == nullptr) return parts;
  const WordTable& table = document.tables[paragraph.table];
  if (paragraph.row >= table.columnsOfRows.size()) return parts;
  const Look look = lookOf(table);
  const bool isFirstRow = look.hasFirstRow && paragraph.row == 0;
  const bool isLastRow = look.hasLastRow && paragraph.row + 1 == table.columnsOfRows.size();
  const bool isFirstColumn = look.hasFirstColumn && paragraph.column == 0;
  const bool isLastColumn =
      look.hasLastColumn && paragraph.column + paragraph.columns >= table.columnsOfRows[paragraph.row];
  const auto add = [&parts](bool applies, const char* part) {
    if (applies) parts.emplace_back(std::string("table.w.tblStylePr.") + part);
  };
  // Bands are counted from the first row or column that is not formatted on its own.
  const auto addBands = [&](bool has, bool isOutside, std::size_t index, std::size_t size, const char* odd,
                            const char* even) {
    if (!has || isOutside || size == 0) return;
    const bool isOdd = index / size % 2 == 0;
    add(true, isOdd ? odd : even);
  };
  add(true, "wholeTable");
  addBands(look.hasColumnBands, isFirstColumn || isLastColumn, paragraph.column - (look.hasFirstColumn ? 1 : 0),
           bandSize(*tableStyle, "table.w.tblStyleColBandSize"), "band1Vert", "band2Vert");
  addBands(look.hasRowBands, isFirstRow || isLastRow, paragraph.row - (look.hasFirstRow ? 1 : 0),
           bandSize(*tableStyle, "table.w.tblStyleRowBandSize"), "band1Horz", "band2Horz");
  add(isFirstRow, "firstRow");
  add(isLastRow, "lastRow");
  add(isFirstColumn, "firstCol");
  add(isLastColumn, "lastCol");
  add(isFirstRow && isFirstColumn, "nwCell");
  add(isFirstRow && isLastColumn, "neCell");
  add(isLastRow && isFirstColumn, "swCell");
  add(isLastRow && isLastColumn, "seCell");
  return parts;
}

}  // namespace zt
