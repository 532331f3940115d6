// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Files that tests of several floors compare with, and whether a sanitizer makes everything many times slower.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace zt::test {

#ifdef ZT_SANITIZED
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Compares with a file of tests/data/archives. With ZT_UPDATE_ARCHIVES in the environment it is written instead.
inline void expectStored(const std::string& text, const std::string& name) {
  const std::string path = std::string(ZT_TEST_DATA_DIR) + "/archives/" + name;
  if (std::getenv("ZT_UPDATE_ARCHIVES") != nullptr) std::ofstream(path) << text;
  EXPECT_EQ(text, contentOf(path)) << name;
}

}  // namespace zt::test
