// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// A colour of three bytes, or none at all (transparent).
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool isTransparent = false;

  friend bool operator==(const Colour&, const Colour&) = default;
};

/// What "#rrggbb", "transparent" or one of the sixteen names of older files says; none otherwise.
std::optional<Colour> parseColour(std::string_view text);

/// "#rrggbb" in lower case, or "transparent".
std::string colourText(const Colour& colour);

}  // namespace zt
