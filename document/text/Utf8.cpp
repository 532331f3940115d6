// SPDX-License-Identifier: MIT
#include <document/text/Utf8.h>

#include <utf8.h>

#include <algorithm>

namespace zt {

std::optional<char32_t> takeCharacter(std::string_view& text) {
  constexpr std::size_t kLongest = 4;
  const char* at = text.data();
  if (static_cast<unsigned char>(*at) < 0x80) {
    text.remove_prefix(1);
    return static_cast<char32_t>(*at);
  }
  if (utf8::find_invalid(at, at + std::min(kLongest, text.size())) == at) {
    text.remove_prefix(1);
    return std::nullopt;
  }
  const char32_t character = utf8::unchecked::next(at);
  text.remove_prefix(static_cast<std::size_t>(at - text.data()));
  return character;
}

std::string excerpt(std::string_view text, std::size_t mostBytes) {
  if (text.size() <= mostBytes) return std::string(text);
  // A character that crosses the end looks broken, so that it is left out whole.
  return std::string(text.data(), utf8::find_invalid(text.data(), text.data() + mostBytes)).append("...");
}

}  // namespace zt
