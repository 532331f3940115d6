// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSAssertionHandler.h>
#include <platform/NSException.h>
#include <platform/NSLog.h>

namespace zt {
namespace {

struct Witness : NSAssertionHandler {
  std::vector<AssertionReport> seen;
  void willRaise(const AssertionReport& report) override { seen.push_back(report); }
};

std::string raise(const void* object, int* line) {
  try {
    *line = __LINE__ + 1;
    ZT_RAISE("cleanup:", object, "src/unit", "%@ -- unused <%p>", "cleanup", nullptr);
  } catch (const NSInternalInconsistencyException& raised) {
    return raised.reason();
  }
  return {};
}

TEST(RaisingHandlerTest, RaisesTheDescriptionAndShowsTheWholeFailureFirst) {
  Witness outer, inner;
  int line = 0;
  {
    const NSAssertionHandler::Scope scope(outer);
    EXPECT_EQ(raise(&line, &line), "cleanup -- unused <0x0>");
    const NSAssertionHandler::Scope nested(inner);
    raise(nullptr, &line);
  }
  raise(nullptr, &line);  // the standard handler again
  ASSERT_EQ(outer.seen.size(), 1u);
  ASSERT_EQ(inner.seen.size(), 1u);
  EXPECT_EQ(outer.seen[0].text(), format("src/unit:%d: cleanup: <%p>: cleanup -- unused <0x0>", line, &line));
}

TEST(PlatformLogTest, WritesOneLineToTheErrorStreamOrToTheRecorderOfTheScope) {
  testing::internal::CaptureStderr();
  NSLog("a %d\nb", 1);
  {
    NSLogRecorder recorder;
    NSLog("heard %@", "x\ny");
    EXPECT_EQ(recorder.takeMessages(), std::vector<std::string>{"heard x\ny"});
  }
  NSLog("c");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a 1\\nb\nc\n");
}

}  // namespace
}  // namespace zt
