// SPDX-License-Identifier: MIT
#include <document/values/Scalar.h>

#include <array>
#include <charconv>
#include <cmath>

namespace zt {

std::optional<bool> parseBoolean(std::string_view text) {
  if (text == "true") return true;
  if (text == "false") return false;
  return std::nullopt;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (text.empty() || read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

std::optional<double> parseNumber(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (text.empty() || read.ec != std::errc() || read.ptr != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::string numberText(double number) {
  std::array<char, 400> digits = {};
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  return {digits.data(), written.ptr};
}

}  // namespace zt
