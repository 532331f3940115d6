// SPDX-License-Identifier: MIT
#include <document/values/Colour.h>

#include <array>
#include <charconv>
#include <utility>

namespace zt {

namespace {

constexpr std::array<std::pair<std::string_view, std::uint32_t>, 17> kNames = {{{"black", 0x000000},
                                                                                {"silver", 0xC0C0C0},
                                                                                {"gray", 0x808080},
                                                                                {"grey", 0x808080},
                                                                                {"white", 0xFFFFFF},
                                                                                {"maroon", 0x800000},
                                                                                {"red", 0xFF0000},
                                                                                {"purple", 0x800080},
                                                                                {"fuchsia", 0xFF00FF},
                                                                                {"green", 0x008000},
                                                                                {"lime", 0x00FF00},
                                                                                {"olive", 0x808000},
                                                                                {"yellow", 0xFFFF00},
                                                                                {"navy", 0x000080},
                                                                                {"blue", 0x0000FF},
                                                                                {"teal", 0x008080},
                                                                                {"aqua", 0x00FFFF}}};

Colour fromNumber(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
          static_cast<std::uint8_t>(number)};
}

}  // namespace

std::optional<Colour> parseColour(std::string_view text) {
  if (text == "transparent") return Colour{0, 0, 0, true};
  if (text.size() == 7 && text.front() == '#') {
    std::uint32_t number = 0;
    const auto read = std::from_chars(text.data() + 1, text.data() + 7, number, 16);
    if (read.ec == std::errc() && read.ptr == text.data() + 7) return fromNumber(number);
    return std::nullopt;
  }
  for (const auto& [name, number] : kNames) {
    if (text == name) return fromNumber(number);
  }
  return std::nullopt;
}

std::string colourText(const Colour& colour) {
  if (colour.isTransparent) return "transparent";
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "#";
  for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) {
    text += kDigits[part >> 4];
    text += kDigits[part & 15];
  }
  return text;
}

}  // namespace zt
