// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// How large an archive and what it holds may be.

#include <cstddef>

namespace zt {

/// One set for both sides: what goes beyond a limit is refused on writing, and ends the reading, with an error that
/// names the limit. What is written within them can therefore be read. Whoever reads with smaller ones writes with the
/// same.
struct ZTAArchiveLimits {
  /// Parts of the format, the same for everybody.
  static constexpr int depth = 200;                  ///< elements in one another
  static constexpr std::size_t name = 50'000;        ///< bytes of the name of an element, and so of a property
  static constexpr std::size_t longest = 9'999'999;  ///< bytes of one text or attribute

  std::size_t bytes = std::size_t{512} << 20;       ///< of the text, unpacked
  std::size_t treeBytes = std::size_t{4096} << 20;  ///< of the tree in the memory of the reader
  std::size_t text = longest;                       ///< of one text or attribute; on reading only
  std::size_t findings = 200;                       ///< that are kept, more are counted; on reading only
  std::size_t propertyNames = 50'000;               ///< different ones: their keys are kept for ever
};

}  // namespace zt
