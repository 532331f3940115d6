// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSDictionary.h>
#include <platform/NSString.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTUDynamicCast.h>
#include <support/ZTULog.h>

#include <thread>

namespace zt {
namespace {

TEST(ReturningHandlerTest, RecordsOrPrintsTheFailureOfItsThreadAndReturns) {
  ZTUAssertionRecorder recorder;
  int object = 0;
  const int line = __LINE__ + 1;
  ZT_REPORT("addObserver:", &object, "src/unit", "Attempted to add self (%p) as own observer.", nullptr);
  testing::internal::CaptureStderr();
  std::thread([] { ZT_REPORT("setName:", nullptr, "src/unit", "two\nlines"); }).join();
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(printed.starts_with("src/unit:")) << printed;
  EXPECT_TRUE(printed.ends_with(": setName: <0x0>: two\\nlines\n")) << printed;
  EXPECT_EQ(recorder.descriptions(), std::vector<std::string>{"Attempted to add self (0x0) as own observer."});
  EXPECT_EQ(recorder.takeReports()[0].text(),
            format("src/unit:%d: addObserver: <%p>: Attempted to add self (0x0) as own observer.", line, &object));
  EXPECT_TRUE(recorder.reports().empty());
}

TEST(ReportSubjectTest, IsTheObjectThatReportsOrTheOneThatTheCallNames) {
  ZTUAssertionRecorder reports;
  ZTULogRecorder log;
  Ref<NSString> reporting = NSString::make("reporting");
  const Ref<NSString> other = NSString::make("other");
  ZT_REPORT("validate", reporting.get(), "src/unit", "about itself");
  ZT_REPORT_ABOUT(other.get(), "validate", reporting.get(), "src/unit", "about %@", other);
  ZT_REPORT("validate", &log, "src/unit", "about nothing counted");
  ZTULog_About(other.get(), kZTULogNotice, "src/unit", "about %@", other);
  ZTULog_Fn(kZTULogNotice, "src/unit", "about nothing");
  const void* const address = std::exchange(reporting, nullptr).get();  // the report keeps it
  ASSERT_EQ(reports.reports().size(), 3u);
  EXPECT_EQ(reports.reports()[0].subject.get(), address);
  EXPECT_EQ(reports.reports()[0].subject->description(), "reporting");
  EXPECT_EQ(reports.reports()[1].subject, other);
  EXPECT_EQ(reports.reports()[1].object, address);
  EXPECT_EQ(reports.reports()[2].subject, nullptr);
  EXPECT_EQ(log.entries()[0].subject, other);
  EXPECT_EQ(log.entries()[1].subject, nullptr);
}

TEST(ReportSubjectTest, IsNoneForAnObjectThatIsBeingMadeOrDestroyed) {
  struct Complaining final : NSObject {
    Complaining() { ZT_REPORT("init", this, "src/unit", "making"); }
    ~Complaining() override { ZT_REPORT("dealloc", this, "src/unit", "dying"); }
  };
  ZTUAssertionRecorder reports;
  make<Complaining>();
  ASSERT_EQ(reports.descriptions(), (std::vector<std::string>{"making", "dying"}));
  for (const AssertionReport& report : reports.reports()) EXPECT_EQ(report.subject, nullptr) << report.description;
}

TEST(LevelledLogTest, WritesLevelFileAndMessageToTheInnermostSink) {
  testing::internal::CaptureStderr();
  ZTULog_Fn(kZTULogFailure, "src/unit", "Couldn't create property from node %s, using default", "fo:color");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "1, src/unit, Couldn't create property from node fo:color, using default\n");
  ZTULogRecorder outer;
  {
    ZTULogRecorder inner;
    ZTULog_Fn(kZTULogNotice, "src/unit", "inner");
    EXPECT_EQ(inner.lines(), std::vector<std::string>{"10, src/unit, inner"});
  }
  ZTULog_Fn(3, "src/unit", "outer %d", 2);
  EXPECT_EQ(outer.lines(), std::vector<std::string>{"3, src/unit, outer 2"});
}

struct Interface {
  virtual ~Interface() = default;
};
struct Both final : NSObject, Interface {};

TEST(DynamicCastTest, AnswersTheObjectOfTheClassAndNoneForEverythingElse) {
  const Ref<NSObject> text = NSString::make("x");
  const Ref<NSObject> both = make<Both>();
  const NSObject* constant = both.get();
  EXPECT_EQ(ZTUDynamicCast<NSString>(text).get(), text.get());
  EXPECT_EQ(ZTUDynamicCast<NSDictionary>(text), nullptr);
  EXPECT_EQ(ZTUDynamicCast<NSString>(Ref<NSObject>()), nullptr);
  EXPECT_EQ(ZTUDynamicCast<Interface>(static_cast<NSObject*>(nullptr)), nullptr);
  EXPECT_EQ(ZTUDynamicCast<Interface>(both.get()), static_cast<Both*>(both.get()));
  EXPECT_EQ(ZTUDynamicCast<Both>(constant), constant);
  EXPECT_EQ(ZTUDynamicCast<Interface>(text.get()), nullptr);
}

}  // namespace
}  // namespace zt
