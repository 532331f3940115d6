// SPDX-License-Identifier: MIT
#include <document/values/Length.h>

#include <document/values/Decimal.h>

#include <array>
#include <charconv>
#include <cstdlib>

namespace zt {

namespace {

struct Unit {
  std::string_view name;
  std::int64_t size;
};

constexpr std::array kUnits = {Unit{"in", Length::kPerInch},       Unit{"cm", Length::kPerCentimetre},
                               Unit{"mm", Length::kPerMillimetre}, Unit{"pt", Length::kPerPoint},
                               Unit{"pc", Length::kPerPica},       Unit{"px", Length::kPerPixel},
                               Unit{"inch", Length::kPerInch}};

constexpr std::int64_t kLongestInches = 400'000;  // ten kilometres
constexpr int kMostDecimals = 10;

// `units` in the unit with exactly `decimals` decimals, none if that is not exact.
std::optional<std::string> exactText(std::uint64_t units, const Unit& unit, std::uint64_t power, int decimals) {
  const auto size = static_cast<std::uint64_t>(unit.size);
  const std::uint64_t whole = units / size;
  const std::uint64_t rest = units % size * power;
  if (rest % size != 0) return std::nullopt;
  std::string text = std::to_string(whole);
  if (decimals > 0) {
    std::string digits = std::to_string(rest / size);
    digits.insert(0, static_cast<std::size_t>(decimals) - digits.size(), '0');
    text.append(1, '.').append(digits);
  }
  return text.append(unit.name);
}

// The shortest exact text in the unit, none beyond `mostDecimals`.
std::optional<std::string> shortestText(std::uint64_t units, const Unit& unit, int mostDecimals) {
  std::uint64_t power = 1;
  for (int decimals = 0; decimals <= mostDecimals; ++decimals, power *= 10) {
    if (auto text = exactText(units, unit, power, decimals)) return text;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Length> parseLength(std::string_view text) {
  if (text == "0" || text == "-0" || text == "+0") return Length{};
  const std::optional<Decimal> number = takeDecimal(text, kMostDecimals);
  if (!number) return std::nullopt;
  for (const Unit& unit : kUnits) {
    if (text != unit.name) continue;
    if (number->whole > kLongestInches * Length::kPerInch / unit.size) return std::nullopt;
    // At most 10^10 * 91,440,000, which 63 bits hold.
    const std::int64_t units =
        number->whole * unit.size + (number->fraction * unit.size + number->power / 2) / number->power;
    return Length{number->isNegative ? -units : units};
  }
  return std::nullopt;
}

std::string lengthText(Length length, bool prefersPoints) {
  const bool isNegative = length.units < 0;
  const std::uint64_t units =
      isNegative ? 0 - static_cast<std::uint64_t>(length.units) : static_cast<std::uint64_t>(length.units);
  const std::string sign = isNegative ? "-" : "";
  constexpr const Unit& kPoint = kUnits[3];
  if (prefersPoints) {
    if (const auto text = shortestText(units, kPoint, 4)) return sign + *text;
  }
  const auto centimetres = shortestText(units, kUnits[1], 4);
  const auto inches = shortestText(units, kUnits[0], 4);
  if (centimetres && (!inches || centimetres->size() <= inches->size())) return sign + *centimetres;
  if (inches) return sign + *inches;
  for (const Unit& unit : {kUnits[2], kPoint}) {
    if (const auto text = shortestText(units, unit, 4)) return sign + *text;
  }
  std::array<char, 40> digits = {};
  const double points = static_cast<double>(units) / Length::kPerPoint;
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), points, std::chars_format::fixed, 7);
  return sign + std::string(digits.data(), written.ptr) + "pt";
}

}  // namespace zt
