// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>

/// @file
/// What benchmarks say beside their times: how two of them compare, and how many instructions an operation takes.
/// Both are registered at namespace scope and answer true, so that the registration can initialise a constant.

namespace zt::bench {

/// "`name` takes at most `limit` times as long as `baseline`", both the full names that the benchmarks print.
/// The times are medians of one run, taken in turns, so the ratio holds on a noisy machine where they do not.
struct Comparison {
  std::string name;
  std::string baseline;
  double limit = 0;  ///< 0: the ratio is only told
};
bool compare(Comparison comparison);

/// An operation whose instructions are counted. `prepare` makes what is needed and answers the operation, which is run
/// a few times to warm up and then counted `repetitions` times. The cost of the loop itself is taken off.
struct InstructionCount {
  std::string name;
  std::function<std::function<void()>()> prepare;
  std::size_t repetitions = 1000;
  double limit = 0;         ///< at most so many instructions an operation; 0: only told
  std::size_t perform = 1;  ///< operations that one call performs; the count is divided by it
};
bool countInstructions(InstructionCount count);

/// Work inside a counted operation that does not belong to it, such as making ready what the operation uses up.
void uncounted(const std::function<void()>& work);

/// Bytes that one of many objects takes, everything counted; told beside the instructions.
struct ByteCount {
  std::string name;
  std::function<double()> measure;
};
bool countBytes(ByteCount count);

}  // namespace zt::bench
