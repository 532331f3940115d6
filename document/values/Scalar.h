// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// "true" or "false", nothing else.
std::optional<bool> parseBoolean(std::string_view text);

/// A whole number in decimal digits, with a sign or without.
std::optional<std::int64_t> parseInteger(std::string_view text);

/// A finite number with a point, whatever the locale; no exponent, no hexadecimal digits.
std::optional<double> parseNumber(std::string_view text);

/// The shortest text that reads back as the same number.
std::string numberText(double number);

}  // namespace zt
