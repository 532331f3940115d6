// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// UTF-8 that may be broken, a character at a time.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// U+FFFD, which stands for what is no character.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

/// Takes the first character off a text that is not empty; where none is well formed there, one byte and no answer.
std::optional<char32_t> takeCharacter(std::string_view& text);

/// As much of a text of a file as a message should hold: whole characters of at most so many bytes, and "..." if
/// something is left out. A text that is cut ends before the first byte that is no character.
std::string excerpt(std::string_view text, std::size_t mostBytes = 60);

}  // namespace zt
