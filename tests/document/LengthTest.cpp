// SPDX-License-Identifier: MIT
#include <document/values/Length.h>

#include <rapidcheck.h>

namespace {

using zt::Length;
using zt::lengthText;
using zt::parseLength;

TEST(LengthTest, FourDecimalsOfEveryUnitAreExact) {
  const std::pair<const char*, std::int64_t> cases[] = {{"1in", 91'440'000},       {"2.54cm", 91'440'000},
                                                        {"25.4mm", 91'440'000},    {"72pt", 91'440'000},
                                                        {"6pc", 91'440'000},       {"96px", 91'440'000},
                                                        {"0.0001in", 9'144},       {"0.0001cm", 3'600},
                                                        {"0.0001mm", 360},         {"0.0001pt", 127},
                                                        {"0.0001pc", 1'524},       {"-.5pt", -635'000},
                                                        {"+1.pt", 1'270'000},      {"0", 0},
                                                        {"0.19685in", 17'999'964}, {"1inch", 91'440'000},
                                                        {"0.00000000004pt", 0},    {"0.0000005pt", 1},
                                                        {"-0.0000005pt", -1}};
  for (const auto& [text, units] : cases) {
    ASSERT_TRUE(parseLength(text).has_value()) << text;
    EXPECT_EQ(parseLength(text)->units, units) << text;
  }
  for (const char* text : {"", "-", ".", "pt", "1", "1 pt", "1pt ", " 1pt", "1em", "1%", "1e3pt", "--1pt", "0x1pt",
                           "1,5cm", "99999999999999999999pt", "400001in", "nan", "infpt"}) {
    EXPECT_FALSE(parseLength(text).has_value()) << text;
  }
}

TEST(LengthTest, IsWrittenShortAndComesBackAsItself) {
  const std::pair<const char*, const char*> cases[] = {
      {"2.54cm", "1in"}, {"0.499cm", "0.499cm"}, {"12pt", "12pt"},        {"-0.2500in", "-0.25in"},
      {"0mm", "0cm"},    {"10mm", "1cm"},        {"0.0001pc", "0.0012pt"}};
  for (const auto& [text, shortest] : cases) EXPECT_EQ(lengthText(*parseLength(text)), shortest);
  EXPECT_EQ(lengthText(*parseLength("1in"), true), "72pt");
  rc::check("any length comes back", [](std::int32_t units, bool points) {
    RC_ASSERT(parseLength(lengthText(Length{units}, points)) == Length{units});
  });
}

}  // namespace
