// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSException.h>
#include <platform/NSNotificationCenter.h>
#include <tests/AllocationFailures.h>

#include <atomic>
#include <optional>
#include <thread>

namespace zt {
namespace {

struct Thing final : NSObject {};

using Center = NSNotificationCenter;
using Log = std::vector<std::string>;

class NotificationTest : public testing::Test {
 protected:
  Center& center = Center::defaultCenter();
  const NSNotificationName changed{"TestChanged"};
  const NSNotificationName removed{"TestRemoved"};
  const Ref<Thing> one = make<Thing>();
  const Ref<Thing> two = make<Thing>();
  Log log;

  Center::Callback note(std::string text) {
    return [this, text](const NSNotification& told) { log.push_back(text + " " + told.name.text()); };
  }
  Log takeLog() { return std::exchange(log, {}); }
};

TEST_F(NotificationTest, TellsThoseWhoListenToTheNameAndTheObjectInTheOrderOfJoining) {
  const NotificationListener a(changed, one.get(), note("a"));
  const NotificationListener b(changed, nullptr, note("b"));
  const NotificationListener c(changed, two.get(), note("c"));
  const NotificationListener d(changed, one.get(), note("d"));
  const NotificationListener e(removed, one.get(), note("e"));
  center.post(changed, one.get());
  EXPECT_EQ(takeLog(), (Log{"a TestChanged", "b TestChanged", "d TestChanged"}));
  center.post(changed, nullptr);
  EXPECT_EQ(takeLog(), Log{"b TestChanged"});
  center.post(removed, two.get());
  EXPECT_EQ(takeLog(), Log{});
}

TEST_F(NotificationTest, HandsOverUserInformationAndKeepsTheObjectUntilItIsOver) {
  Ref<Thing> dying = make<Thing>();
  const NotificationListener listener(NSNotificationName("TestChanged"), nullptr, [&](const NSNotification& told) {
    dying.reset();
    EXPECT_EQ(told.object->referenceCount(), 1u);
    EXPECT_EQ(told.userInfoForKey("oldParent"), nullptr);
    log.push_back(told.userInfoForKey("style")->description());
  });
  center.post(changed, dying.get(), NSDictionary::make("style", NSString::make("body")));
  EXPECT_EQ(log, Log{"body"});
  EXPECT_EQ((NSNotification{changed}.userInfoForKey("style")), nullptr);
}

TEST_F(NotificationTest, UserInformationIsOnlyMadeIfSomebodyListens) {
  const auto isMadeFor = [&](NSObject* object) {
    bool made = false;
    center.postIfHeard(changed, object, [&] { return made = true, Ref<NSDictionary>(); });
    return made;
  };
  EXPECT_FALSE(isMadeFor(one.get()));
  {
    const NotificationListener listener(changed, one.get(), note("a"));
    EXPECT_TRUE(isMadeFor(one.get()));
    EXPECT_FALSE(isMadeFor(two.get()));
    EXPECT_FALSE(Center::anyoneListens(removed, one.get()));
    const NotificationListener any(changed, nullptr, note("b"));
    EXPECT_TRUE(isMadeFor(two.get()));
    EXPECT_TRUE(isMadeFor(nullptr));
  }
  EXPECT_FALSE(isMadeFor(one.get()));
  EXPECT_FALSE(one->hasListeners());
}

TEST_F(NotificationTest, RemovingTakesAwayExactlyWhatIsNamed) {
  int owner = 0, other = 0;
  const auto heard = [&] {
    center.post(changed, one.get());
    center.post(removed, one.get());
    std::string result;
    for (const std::string& line : takeLog()) result += line.substr(0, line.find(' '));
    return result;
  };
  center.addObserver(&owner, note("a"), changed, nullptr);
  center.addObserver(&owner, note("b"), changed, one.get());
  center.addObserver(&owner, note("c"), removed, one.get());
  center.addObserver(&other, note("d"), changed, one.get());
  EXPECT_EQ(heard(), "abdc");
  center.removeObserverWithNameAndObject(&owner, changed, nullptr);
  EXPECT_EQ(heard(), "bdc");
  center.removeObserverWithName(&owner, changed);
  EXPECT_EQ(heard(), "dc");
  center.removeObserver(&owner);
  center.removeObserver(&owner);
  EXPECT_EQ(heard(), "d");
  center.removeObserver(&other);
  EXPECT_FALSE(one->hasListeners());
  EXPECT_THROW(center.addObserver(&owner, nullptr, changed, nullptr), NSInvalidArgumentException);
}

TEST_F(NotificationTest, ListenersMayComeAndGoWhileTheyAreTold) {
  std::optional<NotificationListener> self, later, joining;
  self.emplace(changed, nullptr, [&](const NSNotification&) {
    log.push_back("self");
    joining.emplace(changed, nullptr, note("joined"));
    later.reset();
    self.reset();  // with it goes the closure that runs
  });
  later.emplace(changed, nullptr, note("later"));
  center.post(changed, nullptr);
  EXPECT_EQ(takeLog(), Log{"self"});
  center.post(changed, nullptr);
  EXPECT_EQ(takeLog(), Log{"joined TestChanged"});
}

TEST_F(NotificationTest, AnObjectThatDiesTakesItsListenersAlong) {
  int owner = 0;
  const auto witness = std::make_shared<int>();
  for (int round = 0; round < 100; ++round) {  // addresses come back
    const Ref<Thing> filter = make<Thing>();
    EXPECT_FALSE(filter->hasListeners());
    center.post(changed, filter.get());
    const auto stale = [witness, this](const NSNotification&) { log.emplace_back("stale"); };
    center.addObserver(&owner, stale, changed, filter.get());
    center.addObserver(this, stale, removed, filter.get());
  }
  EXPECT_EQ(takeLog(), Log{});
  EXPECT_EQ(witness.use_count(), 1);
  EXPECT_FALSE(Center::anyoneListens(changed, one.get()));
  center.removeObserver(&owner);
  center.removeObserver(this);
}

TEST_F(NotificationTest, AnExceptionReachesThePosterAndLeavesTheCentreWhole) {
  const NotificationListener endless(removed, nullptr, [&](const NSNotification&) { center.post(removed, nullptr); });
  const NotificationListener thrower(changed, nullptr, [](const NSNotification&) { throw NSGenericException("no"); });
  const NotificationListener next(changed, nullptr, note("next"));
  for (int round = 0; round < 2; ++round) {
    EXPECT_THROW(center.post(changed, nullptr), NSGenericException);
    EXPECT_THROW(center.post(removed, nullptr), NSInternalInconsistencyException) << "instead of overflowing";
  }
  EXPECT_EQ(takeLog(), (Log{"next TestChanged", "next TestChanged"})) << "told whatever the one before has thrown";
}

TEST_F(NotificationTest, ListenersLeaveWithoutMemory) {
  const NSNotificationName name("leaving");
  int told = 0;
  std::optional<NotificationListener> first(std::in_place, name, nullptr, [&](const NSNotification&) { ++told; });
  const NotificationListener second(name, nullptr, [&](const NSNotification&) { told += 10; });
  {
    const test::FailingAllocations none;
    first.reset();
  }
  NSNotificationCenter::defaultCenter().post(name, nullptr);
  EXPECT_EQ(told, 10);
}

TEST_F(NotificationTest, ThreadsMayListenAndPostAtOnce) {
  std::atomic<int> heard = 0;
  const NotificationListener steady(changed, nullptr, [&](const NSNotification&) { ++heard; });
  const auto work = [&] {
    for (int round = 0; round < 2000; ++round) {
      const Ref<Thing> own = make<Thing>();
      const NotificationListener listener(changed, own.get(), [&](const NSNotification&) { ++heard; });
      center.post(changed, own.get());
    }
  };
  std::thread first(work), second(work);
  first.join();
  second.join();
  EXPECT_EQ(heard, 8000);
}

}  // namespace
}  // namespace zt
