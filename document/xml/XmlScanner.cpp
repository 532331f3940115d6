// SPDX-License-Identifier: MIT
#include <document/xml/XmlScanner.h>

#include <document/text/Utf8.h>
#include <document/xml/Namespaces.h>

#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <utility>

namespace zt {

namespace {

bool isBlank(char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }

std::pair<std::string_view, std::string_view> split(std::string_view name) {
  const std::size_t colon = name.find(':');
  if (colon == std::string_view::npos) return {{}, name};
  return {name.substr(0, colon), name.substr(colon + 1)};
}

/// Appends what a reference (without `&` and `;`) stands for; false for one that is not known.
bool appendReference(std::string& text, std::string_view reference) {
  static constexpr std::pair<std::string_view, char> kNamed[] = {
      {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
  for (const auto& [name, character] : kNamed) {
    if (reference != name) continue;
    text += character;
    return true;
  }
  if (!reference.starts_with('#')) return false;
  const bool isHex = reference.starts_with("#x");
  reference.remove_prefix(isHex ? 2 : 1);
  std::uint32_t character = 0;
  const auto read = std::from_chars(reference.data(), reference.data() + reference.size(), character, isHex ? 16 : 10);
  if (read.ec != std::errc() || read.ptr != reference.data() + reference.size() || character > 0x10FFFF) return false;
  utf8::unchecked::append(character, std::back_inserter(text));
  return true;
}

}  // namespace

std::string unescapedAttribute(std::string_view raw) {
  std::string text;
  text.reserve(raw.size());
  for (std::size_t at = 0; at < raw.size(); ++at) {
    const char byte = raw[at];
    if (byte == '\r' && at + 1 < raw.size() && raw[at + 1] == '\n') continue;  // the line feed gives the blank
    if (isBlank(byte)) {
      text += ' ';
      continue;
    }
    const std::size_t end = byte == '&' ? raw.find(';', at) : std::string_view::npos;
    if (end != std::string_view::npos && appendReference(text, raw.substr(at + 1, end - at - 1))) {
      at = end;
    } else {
      text += byte;
    }
  }
  return text;
}

std::string escapedAttribute(std::string_view value, bool isAscii) {
  std::string text;
  text.reserve(value.size());
  for (std::size_t at = 0; at < value.size();) {
    const char byte = value[at];
    if (isAscii && static_cast<unsigned char>(byte) >= 0x80) {
      std::string_view rest = value.substr(at);
      text += "&#" + std::to_string(static_cast<std::uint32_t>(takeCharacter(rest).value_or(U'\uFFFD'))) + ';';
      at = value.size() - rest.size();
      continue;
    }
    ++at;
    switch (byte) {
      case '&': text += "&amp;"; break;
      case '<': text += "&lt;"; break;
      case '>': text += "&gt;"; break;
      case '"': text += "&quot;"; break;
      case '\'': text += "&apos;"; break;
      case '\t': text += "&#9;"; break;
      case '\n': text += "&#10;"; break;
      case '\r': text += "&#13;"; break;
      default: text += byte;
    }
  }
  return text;
}

std::string XmlPlacedAttribute::value() const { return unescapedAttribute(raw); }

XmlScanner::XmlScanner(std::string_view text, std::vector<XmlDeclaredPrefix> declared)
    : mText(text), mDeclared(std::move(declared)) {
  // Views of prefixes are handed out: the strings must not move while an element is looked at.
  mDeclared.reserve(std::max<std::size_t>(mDeclared.capacity(), 64));
}

void XmlScanner::fail() const { throw std::runtime_error("the text is not well-formed"); }

void XmlScanner::passOver(std::string_view mark, std::size_t from) {
  const std::size_t found = mText.find(mark, from);
  if (found == std::string_view::npos) fail();
  mAt = found + mark.size();
}

bool XmlScanner::next() {
  if (mOwesEnd) {
    mOwesEnd = false;
    close();
    return true;
  }
  while ((mAt = mText.find('<', mAt)) != std::string_view::npos) {
    const std::string_view rest = mText.substr(mAt);
    if (rest.starts_with("<!--")) {
      passOver("-->", mAt + 4);
    } else if (rest.starts_with("<![CDATA[")) {
      passOver("]]>", mAt + 9);
    } else if (rest.starts_with("<?")) {
      passOver("?>", mAt + 2);
    } else if (rest.starts_with("<!")) {
      // A document type without declarations of its own: those are refused when a part is read.
      while ((mAt = mText.find_first_of(">\"'", mAt)) != std::string_view::npos && mText[mAt] != '>')
        passOver(mText.substr(mAt, 1), mAt + 1);
      if (mAt == std::string_view::npos) fail();
    } else if (rest.starts_with("</")) {
      readEnd();
      return true;
    } else {
      readStart();
      return true;
    }
  }
  if (!mOpen.empty()) fail();
  return false;
}

void XmlScanner::readStart() {
  mStart = mAt;
  const auto skipBlanks = [this] {
    while (mAt < mText.size() && isBlank(mText[mAt])) ++mAt;
  };
  const auto takeName = [this] {
    const std::size_t from = mAt;
    mAt = mText.find_first_of(" \t\r\n/>=", mAt);
    if (mAt == std::string_view::npos || mAt == from) fail();
    return mText.substr(from, mAt - from);
  };
  ++mAt;
  mWritten = takeName();
  mAttributes.clear();
  const std::size_t outside = mDeclared.size();
  while (true) {
    const std::size_t before = mAt;
    skipBlanks();
    if (mAt >= mText.size()) fail();
    if (mText[mAt] == '>' || mText[mAt] == '/') break;
    XmlPlacedAttribute attribute;
    attribute.start = before;
    attribute.name = takeName();
    skipBlanks();
    if (mAt >= mText.size() || mText[mAt] != '=') fail();
    ++mAt;
    skipBlanks();
    if (mAt >= mText.size() || (mText[mAt] != '"' && mText[mAt] != '\'')) fail();
    attribute.valueStart = mAt + 1;
    passOver(mText.substr(mAt, 1), mAt + 1);
    attribute.end = mAt;
    attribute.raw = mText.substr(attribute.valueStart, attribute.end - 1 - attribute.valueStart);
    const auto [prefix, local] = split(attribute.name);
    if (prefix == "xmlns" || attribute.name == "xmlns") {
      mDeclared.push_back({std::string(prefix.empty() ? "" : local), prefixForAddress(attribute.value())});
    } else {
      mAttributes.push_back(attribute);
    }
  }
  mIsEmpty = mText[mAt] == '/';
  mAt += mIsEmpty ? 2 : 1;
  if (mAt > mText.size() || mText[mAt - 1] != '>') fail();
  for (XmlPlacedAttribute& attribute : mAttributes) {
    const auto [prefix, local] = split(attribute.name);
    attribute.prefix = prefix.empty() ? std::string_view("none") : standard(prefix);
    attribute.name = local;
  }
  const auto [prefix, local] = split(mWritten);
  mPrefix = standard(prefix);
  mName = local;
  mIsStart = true;
  mOwesEnd = mIsEmpty;
  mOpen.push_back({mWritten, outside});
}

void XmlScanner::readEnd() {
  mStart = mAt;
  const std::size_t end = mText.find('>', mAt);
  if (end == std::string_view::npos || mOpen.empty()) fail();
  std::string_view written = mText.substr(mAt + 2, end - mAt - 2);
  while (!written.empty() && isBlank(written.back())) written.remove_suffix(1);
  if (written != mOpen.back().written) fail();
  mAt = end + 1;
  mIsEmpty = false;
  close();
}

void XmlScanner::close() {
  mWritten = mOpen.back().written;
  const auto [prefix, local] = split(mWritten);
  mPrefixOfEnd = standard(prefix);
  mPrefix = mPrefixOfEnd;
  mName = local;
  mIsStart = false;
  mAttributes.clear();
  mDeclared.resize(mOpen.back().declared);
  mOpen.pop_back();
}

std::string_view XmlScanner::standard(std::string_view written) const {
  if (written == "xml") return "xml";
  for (auto declared = mDeclared.rbegin(); declared != mDeclared.rend(); ++declared) {
    if (declared->written == written) return declared->standard;
  }
  return mPrefixes == Prefixes::standard ? written : "none";
}

}  // namespace zt
