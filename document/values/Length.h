// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// An exact length. The unit is 1/91,440,000 inch: the largest in which four decimals of in, cm, mm,
/// pt, pc and px are all whole numbers, so that "0.0001mm" (360 units) and "0.0001pt" (127 units)
/// are kept without rounding, and lengths that are equal compare equal whatever they were written in.
struct Length {
  static constexpr std::int64_t kPerInch = 91'440'000;
  static constexpr std::int64_t kPerCentimetre = 36'000'000;
  static constexpr std::int64_t kPerMillimetre = 3'600'000;
  static constexpr std::int64_t kPerPoint = 1'270'000;
  static constexpr std::int64_t kPerPica = 15'240'000;
  static constexpr std::int64_t kPerPixel = 952'500;  ///< 96 to the inch

  std::int64_t units = 0;

  friend auto operator<=>(const Length&, const Length&) = default;

  [[nodiscard]] double millimetres() const { return static_cast<double>(units) / kPerMillimetre; }
  [[nodiscard]] double points() const { return static_cast<double>(units) / kPerPoint; }
};

/// What a text such as "-0.499cm" says; a bare "0" is a length too. Decimals beyond the tenth are
/// dropped, beyond the fourth the nearest unit is taken. None for anything else, and for lengths
/// beyond ten kilometres.
std::optional<Length> parseLength(std::string_view text);

/// A text that says exactly this length with at most four decimals: in points if `prefersPoints` and
/// they can; else in cm or in, whichever is shorter; else in mm; else in points. A length that none of
/// them holds is written in points, with as many decimals as it takes to come back as the same length.
std::string lengthText(Length length, bool prefersPoints = false);

}  // namespace zt
