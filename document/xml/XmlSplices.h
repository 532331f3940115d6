// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Editing a text byte by byte: what is not named stays as it is.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// Pieces of a text with what takes their places.
class XmlSplices {
 public:
  /// The bytes from `start` up to `end` give way to the text; with `start` equal to `end` it is put there. What is put
  /// at one place stands in the order of the calls. Pieces must not overlap.
  void replace(std::size_t start, std::size_t end, std::string text);
  void insert(std::size_t at, std::string text) { replace(at, at, std::move(text)); }
  void remove(std::size_t start, std::size_t end) { replace(start, end, {}); }

  [[nodiscard]] bool isEmpty() const noexcept { return mSplices.empty(); }
  [[nodiscard]] std::size_t count() const noexcept { return mSplices.size(); }

  struct Splice {
    std::size_t start;
    std::size_t end;
    std::string text;
  };
  /// In the order of the text.
  [[nodiscard]] std::vector<Splice> sorted() const;

  /// The text with all pieces replaced. Throws `std::logic_error` where two overlap or one lies outside of it.
  [[nodiscard]] std::string applyTo(std::string_view text) const;

 private:
  std::vector<Splice> mSplices;
};

}  // namespace zt
