// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/TextReader.h>

#include <document/values/Scalar.h>
#include <wordprocessing/reading/WordUses.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace zt {

namespace {

constexpr std::int64_t kMostColumns = 1'000;
constexpr std::size_t kLongestFieldCode = 10'000;  // of one paragraph

struct KindName {
  std::string_view element;
  std::string_view properties;
};

// By kind, as far as it has properties.
constexpr std::array<KindName, 6> kKinds = {
    {{"", ""}, {"p", "pPr"}, {"r", "rPr"}, {"tbl", "tblPr"}, {"tr", "trPr"}, {"tc", "tcPr"}}};

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
  mFieldCode.clear();
  mIsInFieldCode = false;
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
    const std::size_t above = mOpen.empty() ? 0 : static_cast<std::size_t>(mOpen.back().kind);
    if (above != 0 && above < kKinds.size() && name == kKinds[above].properties) return mBuilder.startElement(element);
    for (std::size_t each = 1; each < kKinds.size(); ++each) {
      if (name == kKinds[each].element) kind = static_cast<Kind>(each);
    }
    if (name == "txbxContent") kind = Kind::box;
    if (name == "instrText") kind = Kind::fieldCode;
    if (name == "fldSimple") {
      mFieldCode.append(element.attribute("w", "instr").value_or("")).append(" ");
      mFieldLine = element.line;
    }
    noteReference(element);
  }
  const bool isPlace = kind != Kind::other && static_cast<std::size_t>(kind) < kKinds.size();
  mOpen.push_back({kind, isPlace ? mDocument.places.size() : kNowhere});
  if (isPlace) mDocument.places.resize(mDocument.places.size() + (kind == Kind::paragraph ? 2 : 1), kNowhere);
  begin(kind, element.line);
}

void TextReader::endElement() {
  if (mBuilder.isOpen()) {
    if (mBuilder.endElement()) takeProperties(mBuilder.take());
    return;
  }
  const Open open = mOpen.back();
  mOpen.pop_back();
  end(open);
}

void TextReader::begin(Kind kind, int line) {
  switch (kind) {
    case Kind::paragraph: beginParagraph(line); break;
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
    case Kind::fieldCode:
      mIsInFieldCode = true;
      mFieldLine = line;
      break;
    case Kind::other: break;
  }
}

void TextReader::beginParagraph(int line) {
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
}

void TextReader::end(const Open& open) {
  switch (open.kind) {
    case Kind::paragraph: {
      WordParagraph& paragraph = mDocument.paragraphs[mParagraphs.back()];
      if (paragraph.use == kNowhere) {
        const WordElement none{.prefix = "w", .name = "pPr", .attributes = {}, .children = {}, .line = paragraph.line};
        paragraph.use = use(StyleFamily::paragraph, none);
        mDocument.places[open.place] = paragraph.use;
      }
      mParagraphs.pop_back();
      noteField();
      break;
    }
    case Kind::run:
      if (!mParagraphs.empty()) {
        if (mRuns.back() == kNowhere) {
          const int line = mDocument.paragraphs[mParagraphs.back()].line;
          mRuns.back() =
              use(StyleFamily::text, {.prefix = "w", .name = "rPr", .attributes = {}, .children = {}, .line = line});
        }
        mDocument.paragraphs[mParagraphs.back()].runs.push_back(mRuns.back());
        mDocument.places[open.place] = mRuns.back();
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
    case Kind::fieldCode: mIsInFieldCode = false; break;
    case Kind::row:
    case Kind::other: break;
  }
}

void TextReader::takeProperties(WordElement properties) {
  const Open& owner = mOpen.back();
  std::size_t used = kNowhere;
  switch (owner.kind) {
    case Kind::paragraph:
      for (WordElement& child : properties.children) {
        if (!child.is("rPr") || child.children.empty()) continue;
        const std::size_t mark = use(StyleFamily::text, std::move(child));
        mDocument.places[owner.place + 1] = mark;
        mDocument.paragraphs[mParagraphs.back()].mark = mark;
        child = {.prefix = "w", .name = "rPr", .attributes = {}, .children = {}, .line = 0};
      }
      used = use(StyleFamily::paragraph, std::move(properties));
      mDocument.paragraphs[mParagraphs.back()].use = used;
      break;
    case Kind::run:
      used = use(StyleFamily::text, std::move(properties));
      mRuns.back() = used;
      break;
    case Kind::table:
      if (const WordElement* look = properties.child("tblLook")) mDocument.tables[mTables.back()].look = lookOf(*look);
      used = use(StyleFamily::table, std::move(properties));
      mDocument.tables[mTables.back()].use = used;
      break;
    case Kind::row: used = use(StyleFamily::tableRow, std::move(properties)); break;
    default: {
      const std::string* span = properties.valOf("gridSpan");
      const auto columns = span != nullptr ? parseInteger(*span) : std::nullopt;
      if (columns && *columns > 1) mColumns.back() = static_cast<std::size_t>(std::min(*columns, kMostColumns));
      used = use(StyleFamily::tableCell, std::move(properties));
    }
  }
  mDocument.places[owner.place] = used;
}

// Thousands of paragraphs share few ways of being formatted.
std::size_t TextReader::use(StyleFamily family, WordElement properties) {
  std::string styleId;
  const std::string_view naming = styleElementOf(family);
  std::erase_if(properties.children, [&](const WordElement& child) {
    if (!isNoFormatting(child)) return false;
    if (!naming.empty() && child.is(naming)) {
      if (const std::string* id = child.val()) styleId = *id;
    } else {
      noteReferences(child);
    }
    return true;
  });
  std::string key = useKey(family, styleId, properties);
  const int line = properties.line;
  return add(std::move(key), {family, std::move(styleId), std::move(properties), mPart, line, 0, false});
}

std::size_t TextReader::add(std::string key, WordUse use) {
  const auto [found, isNew] = mDocument.useByKey.try_emplace(std::move(key), mDocument.uses.size());
  if (isNew) mDocument.uses.push_back(std::move(use));
  ++mDocument.uses[found->second].count;
  return found->second;
}

void TextReader::noteReference(std::string_view element, const std::string* id, int line) {
  const StyleFamily* family = referredFamilyOf(element);
  if (family == nullptr || id == nullptr || id->empty()) return;
  add(referenceKey(*family, *id), {*family, *id, {}, mPart, line, 0, true});
}

void TextReader::noteReference(const XmlElement& element) {
  if (element.prefix != "w" || !element.name.ends_with("Style")) return;
  if (const auto id = element.attribute("w", "val")) {
    const std::string text(*id);
    noteReference(element.name, &text, element.line);
  }
}

void TextReader::noteReferences(const WordElement& element) {
  if (element.prefix == "w") noteReference(element.name, element.val(), element.line);
  for (const WordElement& child : element.children) noteReferences(child);
}

void TextReader::text(std::string_view text) {
  if (mIsInFieldCode && mFieldCode.size() + text.size() < kLongestFieldCode) mFieldCode.append(text);
}

// STYLEREF "Name", and TOC \t "Name,1,Other,2" (17.16.5.59, 17.16.5.68): the names that people see.
void TextReader::noteField() {
  if (mFieldCode.empty()) return;
  const auto add = [this](std::string_view name) {
    while (name.starts_with(' ')) name.remove_prefix(1);
    while (name.ends_with(' ')) name.remove_suffix(1);
    if (!name.empty()) mDocument.fieldNames.push_back({std::string(name), mPart, mFieldLine});
  };
  for (const std::string_view mark : {"STYLEREF", "\\t"}) {
    for (std::size_t at = mFieldCode.find(mark); at != std::string::npos; at = mFieldCode.find(mark, at)) {
      at = mFieldCode.find_first_not_of(' ', at + mark.size());
      if (at == std::string::npos) break;
      const bool isQuoted = mFieldCode[at] == '"';
      if (isQuoted) ++at;
      std::string_view words = std::string_view(mFieldCode).substr(at);
      words = words.substr(0, words.find(isQuoted ? '"' : ' '));
      at += words.size();
      if (mark == "STYLEREF") add(words);
      for (std::size_t comma = 0; mark != "STYLEREF" && comma != std::string_view::npos;) {
        comma = words.find_first_of(",;");
        add(words.substr(0, comma));
        words.remove_prefix(comma == std::string_view::npos ? words.size() : comma + 1);
      }
    }
  }
  mFieldCode.clear();
}

}  // namespace zt
