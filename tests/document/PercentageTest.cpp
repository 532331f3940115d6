// SPDX-License-Identifier: MIT
#include <document/values/Percentage.h>

namespace {

using zt::Length;
using zt::parseLength;
using zt::parsePercentage;
using zt::Percentage;
using zt::shareOf;

TEST(PercentageTest, IsReadWrittenAndAppliedExactly) {
  const std::pair<const char*, const char*> cases[] = {{"110%", "110%"}, {"-33.3%", "-33.3%"}, {"+.5%", "0.5%"},
                                                       {"0%", "0%"},     {"58.00%", "58%"},    {"1.23456%", "1.2345%"}};
  for (const auto& [text, written] : cases) EXPECT_EQ(zt::percentageText(*parsePercentage(text)), written);
  for (const char* text :
       {"", "%", "-%", ".%", "1", "1 %", "super 58%", "1.2.3%", "1e2%", "1000001%", "99999999999999999999%"}) {
    EXPECT_FALSE(parsePercentage(text).has_value()) << text;
  }
  EXPECT_EQ(shareOf(*parseLength("12pt"), *parsePercentage("115%")), *parseLength("13.8pt"));
  EXPECT_EQ(shareOf(*parseLength("-1cm"), *parsePercentage("50%")), *parseLength("-0.5cm"));
  EXPECT_EQ(shareOf(Length{3}, *parsePercentage("50%")), Length{2});
  EXPECT_EQ(zt::percentageText(shareOf(*parsePercentage("50%"), *parsePercentage("80%"))), "40%");
  // A hundred generations of a million percent each end at the bound, not in overflow.
  Length length = *parseLength("400000in");
  Percentage share = *parsePercentage("-1000000%");
  for (int step = 0; step < 100; ++step) length = shareOf(length, *parsePercentage("1000000%"));
  for (int step = 0; step < 100; ++step) share = shareOf(share, *parsePercentage("1000000%"));
  EXPECT_GT(length.units, 0);
  EXPECT_EQ(share, *parsePercentage("-1000000%"));
}

}  // namespace
