// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace zt::fuzzing {

/// The decisions of a run, one byte each; when they are used up, every decision is 0.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t count) noexcept : mNext(data), mEnd(data + count) {}

  [[nodiscard]] bool isEmpty() const noexcept { return mNext == mEnd; }
  std::uint8_t take() noexcept { return isEmpty() ? std::uint8_t{0} : *mNext++; }
  std::size_t below(std::size_t limit) noexcept { return take() % limit; }
  bool chance(std::size_t oneIn) noexcept { return below(oneIn) == 1; }

 private:
  const std::uint8_t* mNext;
  const std::uint8_t* mEnd;
};

}  // namespace zt::fuzzing
