// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/TextReader.h>

#include <document/values/Scalar.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace zt {

namespace {

constexpr std::int64_t kMostColumns = 1'000;

std::string_view propertiesOf(std::string_view element) {
  if (element == "p") return "pPr";
  if (element == "r") return "rPr";
  if (element == "tbl") return "tblPr";
  return element == "tc" ? "tcPr" : std::string_view();
}

/// The flags of w:tblLook as one number, as the transitional form writes them (17.4.56).
std::string lookOf(const WordElement& element) {
  if (const std::string* number = element.val()) return *number;
  constexpr std::array<std::pair<const char*, unsigned>, 6> kFlags = {{{"firstRow", 0x20},
                                                                       {"lastRow", 0x40},
                                                                       {"firstColumn", 0x80},
                                                                       {"lastColumn", 0x100},
                                                                       {"noHBand", 0x200},
                                                                       {"noVBand", 0x400}}};
  unsigned look = 0;
  for (const auto& [name, flag] : kFlags) {
    const std::string* value = element.attribute(name);
    if (value != nullptr && (*value == "1" || *value == "true" || *value == "on")) look |= flag;
  }
  return fmt::format("{:04X}", look);
}

}  // namespace

void TextReader::read(const XmlPart& xml, std::size_t part) {
  mPart = part;
  mSawRoot = false;
  mOpen.clear();
  mParagraphs.clear();
  mTables.clear();
  mColumns.clear();
  mRuns.clear();
  mBuilder = {};
  readWordXml(xml, *this, mDocument.findings);
}

void TextReader::startElement(const XmlElement& element) {
  if (mBuilder.isOpen()) return mBuilder.startElement(element);
  if (mOpen.empty()) {
    mSawRoot = element.prefix == "w";
    if (!mSawRoot) {
      throw ReadError(
          {mDocument.parts[mPart].shown, element.line},
          fmt::format("the root element is {}:{:.60}, expected one of WordprocessingML", element.prefix, element.name));
    }
  }
  Kind kind = Kind::other;
  if (element.prefix == "w") {
    const std::string_view name = element.name;
    constexpr std::array<std::string_view, 5> kParents = {"", "p", "r", "tbl", "tc"};
    const Kind above = mOpen.empty() ? Kind::other : mOpen.back();
    const std::size_t parent = above == Kind::cell ? 4 : above <= Kind::table ? static_cast<std::size_t>(above) : 0;
    if (parent != 0 && name == propertiesOf(kParents.at(parent))) return mBuilder.startElement(element);
    if (name == "p") kind = Kind::paragraph;
    if (name == "r") kind = Kind::run;
    if (name == "tbl") kind = Kind::table;
    if (name == "tr") kind = Kind::row;
    if (name == "tc") kind = Kind::cell;
    if (name == "txbxContent") kind = Kind::box;
  }
  mOpen.push_back(kind);
  begin(kind, element.line);
}

void TextReader::endElement() {
  if (mBuilder.isOpen()) {
    if (mBuilder.endElement()) takeProperties(mBuilder.take());
    return;
  }
  const Kind kind = mOpen.back();
  mOpen.pop_back();
  end(kind);
}

void TextReader::begin(Kind kind, int line) {
  switch (kind) {
    case Kind::paragraph: {
      WordParagraph paragraph{.part = mPart, .line = line};
      if (!mTables.empty() && mTables.back() != kNowhere && !mColumns.empty()) {
        const auto& rows = mDocument.tables[mTables.back()].columnsOfRows;
        paragraph.table = mTables.back();
        paragraph.row = rows.empty() ? 0 : rows.size() - 1;
        paragraph.column = rows.empty() ? 0 : rows.back();
        paragraph.columns = mColumns.back();
      }
      mParagraphs.push_back(mDocument.paragraphs.size());
      mDocument.paragraphs.push_back(std::move(paragraph));
      break;
    }
    case Kind::run: mRuns.push_back(kNowhere); break;
    case Kind::table:
      mTables.push_back(mDocument.tables.size());
      mDocument.tables.emplace_back();
      break;
    case Kind::row:
      if (!mTables.empty() && mTables.back() != kNowhere) mDocument.tables[mTables.back()].columnsOfRows.push_back(0);
      break;
    case Kind::cell: mColumns.push_back(1); break;
    case Kind::box: mTables.push_back(kNowhere); break;
    case Kind::other: break;
  }
}

void TextReader::end(Kind kind) {
  switch (kind) {
    case Kind::paragraph: {
      WordParagraph& paragraph = mDocument.paragraphs[mParagraphs.back()];
      if (paragraph.use == kNowhere) {
        const WordElement none{.prefix = "w", .name = "pPr", .attributes = {}, .children = {}, .line = paragraph.line};
        paragraph.use = use(StyleFamily::paragraph, nullptr, none);
      }
      mParagraphs.pop_back();
      break;
    }
    case Kind::run:
      if (!mParagraphs.empty()) {
        if (mRuns.back() == kNowhere) {
          const int line = mDocument.paragraphs[mParagraphs.back()].line;
          mRuns.back() = use(StyleFamily::text, nullptr,
                             {.prefix = "w", .name = "rPr", .attributes = {}, .children = {}, .line = line});
        }
        mDocument.paragraphs[mParagraphs.back()].runs.push_back(mRuns.back());
      }
      mRuns.pop_back();
      break;
    case Kind::cell:
      if (!mTables.empty() && mTables.back() != kNowhere) {
        auto& rows = mDocument.tables[mTables.back()].columnsOfRows;
        if (!rows.empty()) rows.back() += mColumns.back();
      }
      mColumns.pop_back();
      break;
    case Kind::table:
    case Kind::box: mTables.pop_back(); break;
    case Kind::row:
    case Kind::other: break;
  }
}

void TextReader::takeProperties(WordElement properties) {
  const Kind owner = mOpen.back();
  if (owner == Kind::paragraph) {
    takeParagraphProperties(properties);
  } else if (owner == Kind::run) {
    const std::string* style = properties.valOf("rStyle");
    const std::optional<std::string> id = style != nullptr ? std::optional(*style) : std::nullopt;
    mRuns.back() = use(StyleFamily::text, id ? &*id : nullptr, std::move(properties));
  } else if (owner == Kind::table) {
    WordTable& table = mDocument.tables[mTables.back()];
    if (const WordElement* look = properties.child("tblLook")) table.look = lookOf(*look);
    const std::string* style = properties.valOf("tblStyle");
    const std::optional<std::string> id = style != nullptr ? std::optional(*style) : std::nullopt;
    table.use = use(StyleFamily::table, id ? &*id : nullptr, std::move(properties));
  } else if (owner == Kind::cell) {
    const std::string* span = properties.valOf("gridSpan");
    const auto columns = span != nullptr ? parseInteger(*span) : std::nullopt;
    if (columns && *columns > 1) mColumns.back() = static_cast<std::size_t>(std::min(*columns, kMostColumns));
  }
}

void TextReader::takeParagraphProperties(WordElement& properties) {
  WordParagraph& paragraph = mDocument.paragraphs[mParagraphs.back()];
  if (const WordElement* mark = properties.child("rPr"); mark != nullptr && !mark->children.empty()) {
    const std::string* style = mark->valOf("rStyle");
    paragraph.mark = use(StyleFamily::text, style, *mark);
  }
  const std::string* style = properties.valOf("pStyle");
  const std::optional<std::string> id = style != nullptr ? std::optional(*style) : std::nullopt;
  paragraph.use = use(StyleFamily::paragraph, id ? &*id : nullptr, std::move(properties));
}

// Thousands of paragraphs share few ways of being formatted.
std::size_t TextReader::use(StyleFamily family, const std::string* styleId, WordElement properties) {
  std::erase_if(properties.children, [](const WordElement& child) {
    constexpr std::array<std::string_view, 10> kNoFormatting = {"pStyle",  "rStyle",     "tblStyle",  "rPr",
                                                                "sectPr",  "cnfStyle",   "pPrChange", "rPrChange",
                                                                "tblLook", "tblPrChange"};
    return child.prefix == "w" &&
           std::find(kNoFormatting.begin(), kNoFormatting.end(), child.name) != kNoFormatting.end();
  });
  std::string key(1, static_cast<char>('a' + static_cast<int>(family)));
  if (styleId != nullptr) key += *styleId;
  key += '\n';
  key += canonicalText(properties);
  const auto [found, isNew] = mUses.try_emplace(std::move(key), mDocument.uses.size());
  if (isNew) {
    const int line = properties.line;
    mDocument.uses.push_back(
        {family, styleId != nullptr ? *styleId : std::string(), std::move(properties), mPart, line, 0});
  }
  ++mDocument.uses[found->second].count;
  return found->second;
}

}  // namespace zt
