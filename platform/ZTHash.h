// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace zt {

/// Spreads every bit of the input over the whole output. Dense values (1, 2, 3 ...) in several
/// places at once must not cancel when their hashes are added, and a plain multiply would let them.
inline std::size_t mixBits(std::uint64_t value) noexcept {
  value ^= value >> 32;
  value *= 0xe9846af9b1a615dull;
  value ^= value >> 32;
  value *= 0xe9846af9b1a615dull;
  value ^= value >> 28;
  return static_cast<std::size_t>(value);
}

/// An ordered combination: `combine(combine(s, a), b)` differs from the same with a and b swapped.
inline std::size_t combineHashes(std::size_t seed, std::size_t next) noexcept {
  return mixBits(seed * 0x9e3779b97f4a7c15ull + next);
}

}  // namespace zt
