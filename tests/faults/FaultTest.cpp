// SPDX-License-Identifier: MIT
#include <tests/AllocationFailures.h>
#include <tests/faults/FaultScene.h>

#include <new>

namespace zt::testing {

FaultScene::FaultScene() : mListener(ZTSStylePropertiesChangedNotification, nullptr, [](const NSNotification&) {}) {
  missing = make<TestStyle>({.identifier = "missing"});
  sameName = make<TestStyle>({.identifier = "body", .parentIdentifier = "base"});
  outside = make<TestStyle>({.identifier = "outside", .parentIdentifier = "body"});
  const Ref<PropertyMap> led = mapOf({{list, *outside}, {label, body}});
  outsideAggregate = make<TestAggregate>({.identifier = "outside aggregate", .overridePropertyMap = led.get()});
  kept.addObject(&child);
  aggregate.incrementUsageCount();
  anonymous.incrementUsageCount();
  child.addObserver(mWatcher.get());
  aggregate.addObserver(mWatcher.get());
  lower.host.undo->removeAllActions();
  archive = archived(sheet);
}

FaultScene::~FaultScene() {
  child.removeObserver(mWatcher.get());
  aggregate.removeObserver(mWatcher.get());
  for (Scene* each : {&upper, &lower, &other}) each->host.undo->removeAllActions();
}

std::string FaultScene::text() const {
  // What undo puts back may stand at another place.
  const ZTADiffableXmlScope diffable;
  ZTSStyle::setSortXMLPropertiesByKey(true);
  std::string text = archived(sheet);
  ZTSStyle::setSortXMLPropertiesByKey(false);
  return text;
}

namespace {

struct Operation {
  const char* name;
  void (*perform)(FaultScene& scene);
};

const Operation kOperations[] = {
    {"AddStyle", [](FaultScene& s) { s.sheet.addStyle(s.missing); }},
    {"AddDisplacing", [](FaultScene& s) { s.sheet.addStyle(s.sameName); }},
    {"AddWithReferences", [](FaultScene& s) { s.sheet.addStyleAndReferencedStyles(s.outsideAggregate); }},
    {"RemoveParent", [](FaultScene& s) { s.sheet.removeStyle(Ref<ZTSStyle>(&s.body)); }},
    {"RemoveAggregate", [](FaultScene& s) { s.sheet.removeStyle(Ref<ZTSStyle>(&s.aggregate)); }},
    {"RemoveWithReferences",
     [](FaultScene& s) { s.sheet.removeStyleAndReferencedStyles(Ref<ZTSStyle>(&s.aggregate)); }},
    {"Identify", [](FaultScene& s) { s.sheet.identifyStyle(Ref<ZTSStyle>(&s.anonymous), "missing"); }},
    {"IdentifyKeeping",
     [](FaultScene& s) { s.sheet.identifyStyleKeepingChildren(Ref<ZTSStyle>(&s.body), "renamed", &s.kept); }},
    {"Anonymize", [](FaultScene& s) { s.sheet.anonymizeStyle(Ref<ZTSStyle>(&s.body)); }},
    {"SetParentOfSheet",
     [](FaultScene& s) {
       s.sheet.setParent(s.other.sheet);
       s.sheet.setParent(s.upper.sheet);  // this undoes nothing
     }},
    {"Vary", [](FaultScene& s) { s.sheet.variationOfStyle(&s.child, {.propertyMap = s.values.get()}); }},
    {"AnonymousStyle",
     [](FaultScene& s) { s.sheet.anonymousStyleOfClass(TestStyle::styleClass(), "body", s.values.get(), false); }},
    {"Cleanup", [](FaultScene& s) { s.sheet.cleanupUnusedStyles(); }},
    {"CopySheet", [](FaultScene& s) { s.sheet.copy(); }},
    {"CompareSheets", [](FaultScene& s) { EXPECT_TRUE(s.sheet.isEqual(s.sheet.copy().get())); }},
    {"Archive", [](FaultScene& s) { (void)archived(s.sheet); }},
    {"Unarchive", [](FaultScene& s) { Loaded loaded(s.archive); }},
    {"SetName", [](FaultScene& s) { s.body.setName("Body"); }},
    {"SetParentIdentifier", [](FaultScene& s) { s.child.setParentIdentifier("base"); }},
    {"Lock", [](FaultScene& s) { s.body.setIsLocked(true); }},
    {"SetValue", [](FaultScene& s) { s.base.setValueForProperty(NSNumber::withInteger(7), size); }},
    {"SetValues", [](FaultScene& s) { s.base.setValuesForProperties(*s.values); }},
    {"SetReferences", [](FaultScene& s) { s.aggregate.setValuesForProperties(*s.references); }},
    {"RemoveValue", [](FaultScene& s) { s.body.removeValueForProperty(size); }},
    {"RemoveReference", [](FaultScene& s) { s.aggregate.removeValueForProperty(list); }},
    {"RemoveValues", [](FaultScene& s) { s.base.removeValuesForProperties(*s.keys); }},
    {"LockedSet", [](FaultScene& s) { s.base.lockedStyleSetValuesForProperties(*s.values, 7); }},
    {"LockedRemove", [](FaultScene& s) { s.base.lockedStyleRemoveValuesForProperties(*s.keys, 7); }},
    {"Collapse", [](FaultScene& s) { s.child.collapseOverriddenPropertyValues(); }},
    {"Clear", [](FaultScene& s) { s.child.clearOverriddenPropertyValues(); }},
    {"ReplaceWith", [](FaultScene& s) { s.body.replaceWithStyle(&s.orphan); }},
    {"Use", [](FaultScene& s) { s.orphan.incrementUsageCount(); }},
    {"AddObserver",
     [](FaultScene& s) {
       s.body.addObserver(&s.child);
       s.body.removeObserver(&s.child);
     }},
    {"PropertyMap", [](FaultScene& s) { (void)s.child.propertyMap(); }},
    {"DeepCopy", [](FaultScene& s) { ZTSAggregateStyle::deepCopyStyles({Ref<ZTSStyle>(&s.aggregate)}); }},
    {"Describe", [](FaultScene& s) { (void)s.sheet.description(); }},
    {"UndoAndRedo",
     [](FaultScene& s) {
       s.aggregate.setValuesForProperties(*s.references);
       s.lower.undo();
       s.lower.redo();
     }},
};

/// What validation says, without references that lead out of a stylesheet: removing and moving leaves such.
Log faultsOf(const FaultScene& scene) {
  Log texts = reportsOf(*scene.below.sheet);  // and those above it
  std::erase_if(texts, [](const std::string& text) { return text.find("Referenced style") != std::string::npos; });
  return texts;
}

class FaultTest : public ::testing::TestWithParam<Operation> {
 protected:
  /// One failure, or all from one on. Answers whether there was any.
  static bool failsAt(const Operation& operation, std::uint64_t n, bool andAllAfter) {
    const std::int64_t before = test::liveAllocations();
    const bool fails = runsInto(operation, n, andAllAfter);
    if (!fails || test::liveAllocations() == before) return fails;
    // Something may have been made for the rest of the process; then it is not made again.
    const std::int64_t again = test::liveAllocations();
    runsInto(operation, n, andAllAfter);
    EXPECT_EQ(test::liveAllocations(), again) << "leaks at allocation " << n << (andAllAfter ? " and all after" : "");
    return fails;
  }

  static bool runsInto(const Operation& operation, std::uint64_t n, bool andAllAfter) {
    SCOPED_TRACE(::testing::Message() << operation.name << " allocation " << n
                                      << (andAllAfter ? " and all after" : ""));
    bool fails = false;
    {
      ZTULogRecorder quiet;
      FaultScene scene;
      const std::string first = scene.text();
      {
        ZTUAssertionRecorder reports;
        using Extent = test::FailingAllocations::Extent;
        const test::FailingAllocations memory(n, andAllAfter ? Extent::all : Extent::one);
        try {
          operation.perform(scene);
        } catch (const std::bad_alloc&) {
          // What was asked for; any other exception ends the test.
        }
        fails = memory.hasFailed();
      }
      check(operation, scene, first);
    }
    return fails;
  }

  static void check(const Operation& operation, FaultScene& scene, const std::string& first) {
    EXPECT_EQ(faultsOf(scene), Log{});
    {
      ZTUAssertionRecorder refusals;  // what had happened before the failure is not done twice
      EXPECT_NO_THROW(operation.perform(scene)) << "again";
    }
    EXPECT_EQ(faultsOf(scene), Log{}) << "after it was tried again";
    ZTUAssertionRecorder refusals;  // an inverse may be registered for what then failed: it is refused
    while (scene.lower.host.undo->canUndo()) scene.lower.undo();
    while (scene.upper.host.undo->canUndo()) scene.upper.undo();
    EXPECT_EQ(scene.text(), first) << "after undo";
    EXPECT_EQ(faultsOf(scene), Log{}) << "after undo";
  }
};

TEST_P(FaultTest, LeavesAValidModelThatTriesAgain) {
  const Operation& operation = GetParam();
  ::testing::internal::CaptureStderr();
  failsAt(operation, 1'000'000'000, false);  // what is made once for the process is there
  std::size_t failed = 0;
  for (const bool andAllAfter : {false, true}) {
    for (std::uint64_t n = 0; failsAt(operation, n, andAllAfter) && !HasFailure(); ++n) ++failed;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  RecordProperty("failures", static_cast<int>(failed));
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultTest, ::testing::ValuesIn(kOperations),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace zt::testing
