// SPDX-License-Identifier: MIT
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zt {

/// A number as it is written: its digits, and nothing rounded.
struct Decimal {
  bool isNegative = false;
  std::int64_t whole = 0;
  std::int64_t fraction = 0;  ///< in `power`ths
  std::int64_t power = 1;
};

/// Takes a sign, digits and decimals from the front of the text: "-.5", "12.", "+3". Decimals beyond `mostDecimals` are
/// dropped. None, with an undefined rest, where there is no digit or the whole does not fit.
inline std::optional<Decimal> takeDecimal(std::string_view& text, int mostDecimals) {
  Decimal decimal;
  decimal.isNegative = text.starts_with('-');
  if (decimal.isNegative || text.starts_with('+')) text.remove_prefix(1);
  const auto startsWithDigit = [&text] { return !text.empty() && text.front() >= '0' && text.front() <= '9'; };
  bool hasDigit = startsWithDigit();
  if (hasDigit) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), decimal.whole);
    if (read.ec != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
  }
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    for (int decimals = 0; startsWithDigit(); text.remove_prefix(1)) {
      hasDigit = true;
      if (++decimals > mostDecimals) continue;
      decimal.fraction = decimal.fraction * 10 + (text.front() - '0');
      decimal.power *= 10;
    }
  }
  return hasDigit ? std::optional(decimal) : std::nullopt;
}

}  // namespace zt
