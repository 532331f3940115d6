// SPDX-License-Identifier: MIT
#include <document/text/Utf8.h>

#include <gtest/gtest.h>

namespace {

using namespace zt;

TEST(Utf8Test, TakesCharactersAndBytesThatAreNone) {
  std::string_view text = "a\u00e9\xC3\u8a9e\xED\xA0\x80\U0001F600\xF0\x9F";
  std::string taken;
  while (!text.empty()) {
    const auto character = takeCharacter(text);
    taken += (character ? std::to_string(static_cast<unsigned>(*character)) : "?") + ' ';
  }
  EXPECT_EQ(taken, "97 233 ? 35486 ? ? ? 128512 ? ? ");  // a surrogate is no character
}

TEST(Utf8Test, AnExcerptHoldsWholeCharacters) {
  EXPECT_EQ(excerpt("abcdef", 6), "abcdef");
  EXPECT_EQ(excerpt("abcdefg", 6), "abcdef...");
  EXPECT_EQ(excerpt("abcde\u8a9e", 6), "abcde...");
  EXPECT_EQ(excerpt("abc\u8a9ex", 6), "abc\u8a9e...");
}

}  // namespace
