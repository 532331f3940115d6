// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// UTF-8, decoded in one place for the floors of the library.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zt {

/// A character and the bytes that it takes; a length of 0 where the bytes are no well-formed UTF-8.
struct Utf8Character {
  std::size_t length = 0;
  std::uint32_t code = 0;
};

/// The character that begins at `at`, which must lie in the text. Overlong forms, surrogates and what lies beyond
/// U+10FFFF are not well-formed (The Unicode Standard, table 3-7).
inline Utf8Character utf8CharacterAt(std::string_view text, std::size_t at) noexcept {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data()) + at;
  const std::size_t left = text.size() - at;
  const unsigned char first = bytes[0];
  const auto follows = [&](std::size_t index) { return index < left && (bytes[index] & 0xc0) == 0x80; };
  if (first < 0x80) return {1, first};
  if (first < 0xc2 || !follows(1)) return {};
  if (first < 0xe0) return {2, (first & 0x1fu) << 6 | (bytes[1] & 0x3fu)};
  if (!follows(2)) return {};
  if (first < 0xf0) {
    const std::uint32_t code = (first & 0x0fu) << 12 | (bytes[1] & 0x3fu) << 6 | (bytes[2] & 0x3fu);
    return {code >= 0x800 && (code < 0xd800 || code > 0xdfff) ? std::size_t{3} : 0, code};
  }
  if (first > 0xf4 || !follows(3)) return {};
  const std::uint32_t code =
      (first & 0x07u) << 18 | (bytes[1] & 0x3fu) << 12 | (bytes[2] & 0x3fu) << 6 | (bytes[3] & 0x3fu);
  return {code >= 0x10000 && code <= 0x10ffff ? std::size_t{4} : 0, code};
}

/// The beginning of the text, of at most so many bytes, that ends between two characters.
inline std::string_view utf8Beginning(std::string_view text, std::size_t most) noexcept {
  if (text.size() <= most) return text;
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xc0) == 0x80) --most;
  return text.substr(0, most);
}

}  // namespace zt
