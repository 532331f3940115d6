// SPDX-License-Identifier: MIT

// The parser can be kept from opening files and from expanding entities, but not from taking
// quadratic time over one tag, nor from giving up at the first byte that is no text. Both are
// settled here, on the bytes.

#include <document/xml/XmlText.h>

#include <document/text/Utf8.h>

#include <fmt/core.h>
#include <utf8.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace zt {

namespace {

bool isXmlCharacter(std::uint32_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  return character < 0xD800 || (character > 0xDFFF && character != 0xFFFE && character != 0xFFFF);
}

std::string fromUtf16(std::string_view bytes, bool isBigEndian) {
  std::string text;
  text.reserve(bytes.size());
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<std::uint32_t>(isBigEndian ? (first << 8) | second : (second << 8) | first);
  };
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    std::uint32_t character = unit(at);
    if (character >= 0xD800 && character < 0xDC00 && at + 3 < bytes.size()) {
      const std::uint32_t low = unit(at + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    utf8::append(static_cast<char32_t>(isXmlCharacter(character) ? character : 0xFFFD), text);
  }
  return text;
}

// Most text is plain: a loop without branches over blocks lets the slow look at single characters wait.
bool isPlain(std::string_view text) {
  bool plain = true;
  for (const char byte : text)
    plain &= static_cast<unsigned char>(byte) >= 0x20 && static_cast<unsigned char>(byte) < 0x80;
  return plain;
}

// Where the first byte from `at` on stands that belongs to no character of XML.
std::size_t firstNonText(std::string_view text, std::size_t at) {
  constexpr std::size_t kBlock = 64;
  while (at < text.size()) {
    if (isPlain(text.substr(at, kBlock))) {
      at += kBlock;
      continue;
    }
    const std::size_t end = std::min(text.size(), at + kBlock);
    for (std::string_view rest = text.substr(at); at < end; at = text.size() - rest.size()) {
      const auto character = takeCharacter(rest);
      if (!character || !isXmlCharacter(*character)) return at;
    }
  }
  return text.size();
}

int lineOf(std::string_view text, std::size_t at) {
  return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

// The encoding that the XML declaration names, in lower case; empty if it names none.
std::string declaredEncoding(std::string_view text) {
  if (!text.starts_with("<?xml")) return {};
  std::string_view declaration = text.substr(0, std::min(text.find("?>"), std::size_t{400}));
  const std::size_t at = declaration.find("encoding");
  if (at == std::string_view::npos) return {};
  const std::size_t open = declaration.find_first_of("\"'", at);
  if (open == std::string_view::npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return {};
  std::string name(declaration.substr(open + 1, close - open - 1));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return name;
}

void repair(XmlText& prepared, const XmlPart& part, std::vector<Finding>& findings) {
  std::size_t bad = firstNonText(prepared.text, 0);
  if (bad == prepared.text.size()) return;
  const int line = lineOf(prepared.text, bad);
  std::string repaired;
  repaired.reserve(prepared.text.size() + 64);
  std::size_t count = 0;
  std::size_t from = 0;
  while (bad < prepared.text.size()) {
    repaired.append(prepared.text, from, bad - from).append(kReplacementCharacter);
    from = bad + 1;
    ++count;
    bad = firstNonText(prepared.text, from);
  }
  repaired.append(prepared.text, from);
  prepared.converted = std::move(repaired);
  prepared.text = prepared.converted;
  findings.push_back({Finding::Severity::warning,
                      "invalid-text",
                      {part.shown, line},
                      {},
                      fmt::format("{} byte{} no text; replaced by U+FFFD", count, count == 1 ? " is" : "s are")});
}

using namespace std::string_view_literals;

// Four bytes a character, or those of another family altogether.
bool isForeign(std::string_view bytes) {
  constexpr std::array kStarts = {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv, "\0\0\0<"sv, "<\0\0\0"sv, "\x4C\x6F\xA7\x94"sv};
  return std::any_of(kStarts.begin(), kStarts.end(), [&](std::string_view start) { return bytes.starts_with(start); });
}

bool isUtf8(std::string_view encoding) {
  constexpr std::array kNames = {""sv, "utf-8"sv, "utf8"sv, "us-ascii"sv, "ascii"sv};
  return std::find(kNames.begin(), kNames.end(), encoding) != kNames.end();
}

// Those of one byte a character that libxml2 reads.
bool isEightBit(std::string_view encoding) {
  constexpr std::array kNames = {"iso-8859-"sv, "windows-125"sv, "cp125"sv, "koi8-"sv};
  return std::any_of(kNames.begin(), kNames.end(), [&](std::string_view name) { return encoding.starts_with(name); });
}

}  // namespace

std::string declaredXmlEncoding(std::string_view text) { return declaredEncoding(text); }

XmlText prepareXmlText(const XmlPart& part, std::vector<Finding>& findings) {
  XmlText prepared;
  const std::string_view bytes = part.bytes;
  prepared.text = bytes;
  const auto startsWith = [&](std::string_view mark) { return bytes.starts_with(mark); };

  if (isForeign(bytes)) {
    throw ReadError({part.shown, 1},
                    "written in an encoding that OpenDocument does not know; expected UTF-8 or UTF-16");
  }
  const bool isBigEndian = startsWith("\xFE\xFF"sv) || startsWith("\0<"sv);
  const bool isLittleEndian = startsWith("\xFF\xFE"sv) || startsWith("<\0"sv);
  if (isBigEndian || isLittleEndian) {
    const bool hasMark = !startsWith("\0<"sv) && !startsWith("<\0"sv);
    prepared.converted = fromUtf16(bytes.substr(hasMark ? 2 : 0), isBigEndian);
    prepared.text = prepared.converted;
    prepared.isUtf8 = true;
    return prepared;
  }

  if (startsWith("\xEF\xBB\xBF"sv)) prepared.text = bytes.substr(3);
  const std::string encoding = declaredEncoding(prepared.text);
  if (isUtf8(encoding)) {
    prepared.isUtf8 = true;
    repair(prepared, part, findings);
  } else if (!isEightBit(encoding)) {
    throw ReadError({part.shown, 1},
                    fmt::format("written in the encoding '{}', which is not supported; expected UTF-8 or "
                                "UTF-16",
                                encoding));
  }
  return prepared;
}

namespace {

/// A place in a text that is not known to be XML. Each step ends behind what it passes over, or at the end of the text.
class TagCheck {
 public:
  TagCheck(std::string_view text, const std::string& shown, const XmlLimits& limits)
      : mText(text), mShown(shown), mLimits(limits) {}

  void run() {
    while ((mAt = std::min(mText.find('<', mAt), mText.size())) != mText.size()) {
      const std::string_view rest = mText.substr(mAt);
      if (rest.starts_with("<!--")) {
        skipTo("-->", mAt + 4);
      } else if (rest.starts_with("<![CDATA[")) {
        skipTo("]]>", mAt + 9);
      } else if (rest.starts_with("<?")) {
        skipTo("?>", mAt + 2);
      } else if (rest.starts_with("<!DOCTYPE")) {
        passDocumentType();
      } else if (rest.starts_with("</") || rest.starts_with("<!")) {
        mAt += 2;
      } else {
        passTag();
      }
    }
  }

 private:
  void skipTo(std::string_view mark, std::size_t from) {
    const std::size_t found = mText.find(mark, from);
    mAt = found == std::string_view::npos ? mText.size() : found + mark.size();
  }
  void skipQuoted() { skipTo(mText.substr(mAt, 1), mAt + 1); }
  void goToOneOf(const char* marks) { mAt = std::min(mText.find_first_of(marks, mAt), mText.size()); }

  void passDocumentType() {
    const std::size_t start = mAt;
    for (goToOneOf("[>\"'"); mAt != mText.size() && mText[mAt] != '>'; goToOneOf("[>\"'")) {
      if (mText[mAt] == '[') {
        throw ReadError(
            {mShown, lineOf(mText, start)},
            "a document type with declarations of its own (entities, ...), which OpenDocument does not use; refused");
      }
      skipQuoted();
    }
  }

  void passTag() {
    const std::size_t start = mAt++;
    std::size_t attributes = 0;
    for (goToOneOf("<>\"'"); mAt != mText.size() && mText[mAt] != '>' && mText[mAt] != '<'; goToOneOf("<>\"'")) {
      skipQuoted();
      if (++attributes > mLimits.attributesPerTag) {
        throw ReadError({mShown, lineOf(mText, start)},
                        fmt::format("a tag with more than {} attributes", mLimits.attributesPerTag));
      }
    }
  }

  std::string_view mText;
  const std::string& mShown;
  const XmlLimits& mLimits;
  std::size_t mAt = 0;
};

}  // namespace

void checkTags(std::string_view text, const std::string& shown, const XmlLimits& limits) {
  TagCheck(text, shown, limits).run();
}

}  // namespace zt
