// SPDX-License-Identifier: MIT
#include <document/xml/XmlBytes.h>

#include <document/Finding.h>
#include <document/xml/XmlText.h>

#include <iconv.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <type_traits>

namespace zt {

namespace {

struct ConverterCloser {
  void operator()(void* converter) const { iconv_close(converter); }
};

/// None where a character cannot be converted.
std::optional<std::string> converted(std::string_view text, const std::string& to, const std::string& from) {
  const iconv_t opened = iconv_open(to.c_str(), from.c_str());
  if (opened == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  const std::unique_ptr<std::remove_pointer_t<iconv_t>, ConverterCloser> converter(opened);
  std::string result;
  char* input = const_cast<char*>(text.data());  // not written to
  std::size_t left = text.size();
  while (left != 0) {
    char block[1 << 14];
    char* output = block;
    std::size_t space = sizeof block;
    const std::size_t done = iconv(opened, &input, &left, &output, &space);
    result.append(block, sizeof block - space);
    if (done == static_cast<std::size_t>(-1) && errno != E2BIG) return std::nullopt;
  }
  return result;
}

}  // namespace

XmlBytes::XmlBytes(const XmlPart& part) {
  using namespace std::string_view_literals;
  std::string_view bytes = part.bytes;
  const auto takeMark = [&](std::string_view mark, const char* encoding) {
    if (!mMark.empty() || !bytes.starts_with(mark)) return;
    mMark = mark;
    mEncoding = encoding;
    bytes.remove_prefix(mark.size());
  };
  takeMark("\xEF\xBB\xBF"sv, "");
  takeMark("\xFE\xFF"sv, "UTF-16BE");
  takeMark("\xFF\xFE"sv, "UTF-16LE");
  if (mMark.empty() && bytes.starts_with("\0<"sv)) mEncoding = "UTF-16BE";
  if (mMark.empty() && bytes.starts_with("<\0"sv)) mEncoding = "UTF-16LE";
  if (mEncoding.empty()) {
    const std::string declared = declaredXmlEncoding(bytes);
    const bool isUtf8 = declared.empty() || declared == "utf-8" || declared == "utf8";
    mIsAscii = !isUtf8;
    if (!isUtf8 && declared != "us-ascii" && declared != "ascii") mEncoding = declared;
  }
  const auto refuse = [&] {
    throw ReadError({part.shown, 1}, "holds bytes that are no text in its encoding; it cannot be edited safely");
  };
  if (mEncoding.empty()) {
    mText = bytes;
    return;
  }
  std::optional<std::string> text = converted(bytes, "UTF-8", mEncoding);
  if (!text || converted(*text, mEncoding, "UTF-8") != bytes) refuse();
  mConverted = std::move(*text);
  mText = mConverted;
}

std::string XmlBytes::bytesOf(std::string_view text) const {
  if (mEncoding.empty()) return mMark + std::string(text);
  return mMark + converted(text, mEncoding, "UTF-8").value();
}

}  // namespace zt
