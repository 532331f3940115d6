// SPDX-License-Identifier: MIT
#include <document/values/Colour.h>
#include <document/values/Scalar.h>

#include <clocale>

namespace {

TEST(ScalarTest, NumbersIgnoreTheLocaleAndTakeNothingElse) {
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(zt::parseNumber("1.5"), 1.5);
  EXPECT_EQ(zt::numberText(0.1), "0.1");
  EXPECT_EQ(zt::parseInteger("-12"), -12);
  EXPECT_EQ(zt::parseInteger("+7"), 7);
  for (const char* text : {"", "+", "1,5", "1e3", "0x10", "inf", "nan", " 1", "1 ", "+-1"}) {
    EXPECT_FALSE(zt::parseNumber(text).has_value()) << text;
    EXPECT_FALSE(zt::parseInteger(text).has_value()) << text;
  }
  EXPECT_FALSE(zt::parseInteger("9223372036854775808").has_value());
  EXPECT_EQ(zt::parseBoolean("true"), true);
  EXPECT_EQ(zt::parseBoolean("false"), false);
  EXPECT_FALSE(zt::parseBoolean("1").has_value());
  std::setlocale(LC_ALL, "C");
}

TEST(ColourTest, ReadsSixDigitsNamesAndTransparent) {
  for (const auto& [text, written] :
       {std::pair{"#2E74b5", "#2e74b5"}, {"transparent", "transparent"}, {"navy", "#000080"}}) {
    ASSERT_TRUE(zt::parseColour(text).has_value()) << text;
    EXPECT_EQ(zt::colourText(*zt::parseColour(text)), written);
  }
  for (const char* text :
       {"", "#", "#12345", "#1234567", "#12345g", "#-12345", "#+12345", "# 12345", "auto", "Navy", "123456"}) {
    EXPECT_FALSE(zt::parseColour(text).has_value()) << text;
  }
}

}  // namespace
