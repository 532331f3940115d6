// SPDX-License-Identifier: MIT
#include <document/values/Percentage.h>

#include <document/values/Decimal.h>

#include <algorithm>
#include <limits>

namespace zt {

namespace {

constexpr std::int64_t kMostPercent = 1'000'000;
constexpr int kDecimals = 4;  // of kPerPercent

std::uint64_t magnitude(std::int64_t number) {
  return number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
}

// whole * share / kWhole without overflow on the way: the whole is split at the divisor.
std::int64_t product(std::int64_t whole, std::int64_t share) {
  constexpr std::uint64_t kDivisor = Percentage::kWhole;
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  const std::uint64_t of = magnitude(whole);
  const std::uint64_t by = magnitude(share);
  if (by != 0 && of / kDivisor > kMost / by / 2)
    return (whole < 0) == (share < 0) ? kMost : -static_cast<std::int64_t>(kMost);
  const std::uint64_t result = of / kDivisor * by + (of % kDivisor * by + kDivisor / 2) / kDivisor;
  return (whole < 0) == (share < 0) ? static_cast<std::int64_t>(result) : -static_cast<std::int64_t>(result);
}

}  // namespace

std::optional<Percentage> parsePercentage(std::string_view text) {
  const std::optional<Decimal> number = takeDecimal(text, kDecimals);
  if (!number || text != "%" || number->whole > kMostPercent) return std::nullopt;
  const std::int64_t units =
      number->whole * Percentage::kPerPercent + number->fraction * (Percentage::kPerPercent / number->power);
  if (units > kMostPercent * Percentage::kPerPercent) return std::nullopt;
  return Percentage{number->isNegative ? -units : units};
}

std::string percentageText(Percentage percentage) {
  const std::uint64_t units = magnitude(percentage.units);
  std::string text = percentage.units < 0 ? "-" : "";
  text += std::to_string(units / Percentage::kPerPercent);
  if (const std::uint64_t rest = units % Percentage::kPerPercent; rest != 0) {
    std::string digits = std::to_string(rest);
    digits.insert(0, kDecimals - digits.size(), '0');
    digits.erase(digits.find_last_not_of('0') + 1);
    text.append(1, '.').append(digits);
  }
  return text + '%';
}

Length shareOf(Length whole, Percentage share) { return {product(whole.units, share.units)}; }

Percentage shareOf(Percentage whole, Percentage share) {
  constexpr std::int64_t kMost = kMostPercent * Percentage::kPerPercent;
  return {std::clamp(product(whole.units, share.units), -kMost, kMost)};
}

}  // namespace zt
