// SPDX-License-Identifier: MIT
#include <wordprocessing/properties/WordValues.h>

#include <document/values/Scalar.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace zt {

namespace {

// Whole numbers stay below this, so that no product below overflows: ten kilometres in twips.
constexpr std::int64_t kLargest = 576'000'000;

std::int64_t unitsOf(WordUnit unit) {
  switch (unit) {
    case WordUnit::twip: return Length::kPerPoint / 20;
    case WordUnit::halfPoint: return Length::kPerPoint / 2;
    case WordUnit::eighthPoint: return Length::kPerPoint / 8;
    case WordUnit::point: return Length::kPerPoint;
  }
  return Length::kPerPoint;
}

}  // namespace

std::optional<bool> parseOnOff(std::string_view text) {
  if (text == "1" || text == "true" || text == "on") return true;
  if (text == "0" || text == "false" || text == "off") return false;
  return std::nullopt;
}

std::optional<Length> parseMeasure(std::string_view text, WordUnit unit) {
  if (const auto number = parseInteger(text)) {
    if (*number > kLargest || *number < -kLargest) return std::nullopt;
    return Length{*number * unitsOf(unit)};
  }
  if (const auto number = parseNumber(text)) {
    if (std::abs(*number) > static_cast<double>(kLargest)) return std::nullopt;
    return Length{std::llround(*number * static_cast<double>(unitsOf(unit)))};
  }
  if (text.ends_with("pi")) return parseLength(std::string(text.substr(0, text.size() - 2)) + "pc");
  return text.ends_with("px") ? std::nullopt : parseLength(text);
}

std::optional<Percentage> parseWordPercentage(std::string_view text) {
  return text.ends_with('%') ? parsePercentage(text) : parsePercentage(std::string(text) + '%');
}

// A 240th of 100% is 4166.67 units, so that the nearest 240th of a rounded percentage is the one it was made of.
std::optional<Percentage> parseLines(std::string_view text) {
  const auto length = parseMeasure(text, WordUnit::twip);
  if (!length) return std::nullopt;
  const double lines = static_cast<double>(length->units) / static_cast<double>(unitsOf(WordUnit::twip)) / 240;
  if (std::abs(lines) > 10'000) return std::nullopt;
  return Percentage{std::llround(lines * static_cast<double>(Percentage::kWhole))};
}

std::optional<std::string> parseHexColour(std::string_view text) {
  if (text == "auto") return std::string(text);
  const bool isHex = text.size() == 6 && std::all_of(text.begin(), text.end(), [](char byte) {
                       return std::isxdigit(static_cast<unsigned char>(byte)) != 0;
                     });
  if (!isHex) return std::nullopt;
  std::string colour = "#";
  for (const char byte : text) colour += static_cast<char>(byte >= 'A' && byte <= 'F' ? byte - 'A' + 'a' : byte);
  return colour;
}

std::string themeReference(std::string_view name, std::string_view tint, std::string_view shade) {
  std::string text = "theme:" + std::string(name);
  if (!tint.empty()) text.append(" tint:").append(tint);
  if (!shade.empty()) text.append(" shade:").append(shade);
  return text;
}

}  // namespace zt
