// SPDX-License-Identifier: MIT
#pragma once

#include <document/xml/XmlPart.h>

#include <string>
#include <string_view>

namespace zt {

/// The text of a part as UTF-8, whatever it is written in, and the way back. Where the way there and back does not give
/// the very bytes (text that is damaged), there is none: throws `ReadError`. `part` must outlive it.
class XmlBytes {
 public:
  explicit XmlBytes(const XmlPart& part);
  XmlBytes(const XmlBytes&) = delete;
  XmlBytes& operator=(const XmlBytes&) = delete;

  [[nodiscard]] std::string_view text() const noexcept { return mText; }
  /// Whether the encoding lacks characters, so that what is put in has to be ASCII.
  [[nodiscard]] bool isAscii() const noexcept { return mIsAscii; }
  /// An edited text as bytes of the part.
  [[nodiscard]] std::string bytesOf(std::string_view text) const;

 private:
  std::string mMark;      // the byte order mark, as it stands in the part
  std::string mEncoding;  // empty for UTF-8
  bool mIsAscii = false;
  std::string mConverted;
  std::string_view mText;
};

}  // namespace zt
