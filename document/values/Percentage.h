// SPDX-License-Identifier: MIT
#pragma once

#include <document/values/Length.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// A percentage, exact to four decimals. What it is a share of depends on the property.
struct Percentage {
  static constexpr std::int64_t kPerPercent = 10'000;
  static constexpr std::int64_t kWhole = 100 * kPerPercent;  ///< 100%

  std::int64_t units = 0;  ///< 1/10,000 of a percent

  friend auto operator<=>(const Percentage&, const Percentage&) = default;

  [[nodiscard]] double percent() const { return static_cast<double>(units) / kPerPercent; }
};

/// What a text such as "110%" or "-33.3%" says; none for anything else and beyond a million percent.
std::optional<Percentage> parsePercentage(std::string_view text);

/// "110%", without needless decimals.
std::string percentageText(Percentage percentage);

/// That share of a length, to the nearest unit, halves away from zero; held at the largest length.
Length shareOf(Length whole, Percentage share);

/// A share of a share: 50% of 80% is 40%; held at a million percent.
Percentage shareOf(Percentage whole, Percentage share);

}  // namespace zt
