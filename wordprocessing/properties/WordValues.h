// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What attributes of WordprocessingML say, as pure functions of their text. None for what says nothing usable.

#include <document/values/Length.h>
#include <document/values/Percentage.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// The measures that bare numbers count in.
enum class WordUnit : std::uint8_t { twip, halfPoint, eighthPoint, point };

/// ST_OnOff; "on" and "off" are of the transitional form.
std::optional<bool> parseOnOff(std::string_view text);

/// A bare number in the unit, or a universal measure such as "12.7mm" (22.9.2.15). Decimals of a bare number, which
/// some programs write, are taken to the nearest unit of `Length`.
std::optional<Length> parseMeasure(std::string_view text, WordUnit unit);

/// "66%", or a bare number of percents (transitional).
std::optional<Percentage> parseWordPercentage(std::string_view text);

/// A line spacing of the rule "auto": a bare number in 240ths of a line. Exact: every such number comes back.
std::optional<Percentage> parseLines(std::string_view text);

/// "RRGGBB" as "#rrggbb"; "auto" stays as it is.
std::optional<std::string> parseHexColour(std::string_view text);

/// How a value that refers to the theme is kept: "theme:accent1", "theme:accent1 tint:99", "theme:minorHAnsi".
std::string themeReference(std::string_view name, std::string_view tint = {}, std::string_view shade = {});

}  // namespace zt
