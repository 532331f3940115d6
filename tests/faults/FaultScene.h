// SPDX-License-Identifier: MIT
#pragma once

#include <tests/ztstyles/Archives.h>
#include <ztstyles/ZTSDerivingStyle.h>

namespace zt::testing {

/// Notes how often it was told.
class Watcher final : public NSObject, public ZTSStyleObserver {
 public:
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override { mTold.push_back(textOf(change)); }

 private:
  Log mTold;
};

/// A small document with something of everything: two stylesheets, children, orphans, references, uses, observers and
/// a listener. What operations need besides stands ready, so that they allocate nothing that is not their own.
struct FaultScene {
  FaultScene();
  ~FaultScene();
  FaultScene(const FaultScene&) = delete;
  FaultScene& operator=(const FaultScene&) = delete;

  /// Everything that undo brings back, as an archive.
  [[nodiscard]] std::string text() const;

  Scene upper;
  Scene lower{upper.sheet.get()};
  Scene below{lower.sheet.get()};
  Scene other;
  ZTSStylesheet& sheet = *lower.sheet;
  TestStyle& base = upper.style("base", {}, {{size, 1}, {weight, 1}});
  TestStyle& body = lower.style("body", "base", {{size, 10}});
  TestStyle& child = lower.style("child", "body", {{size, 10}, {weight, 2}});
  TestStyle& anonymous = lower.style({}, "body", {{weight, 3}});
  TestStyle& orphan = lower.style("orphan", "missing", {{colour, "red"}});
  TestStyle& unused = lower.style({}, "body", {{weight, 9}});
  TestAggregate& aggregate = lower.style<TestAggregate>("aggregate", "body", {{list, child}, {label, base}});
  TestStyle& guest = below.style("guest", "body", {{size, 12}});
  Ref<ZTSStyle> missing, sameName, outside, outsideAggregate;
  Ref<PropertyMap> values = mapOf({{size, 5}, {weight, 6}, {colour, "blue"}});
  Ref<PropertyMap> references = mapOf({{list, body}, {label, child}});
  Ref<PropertySet> keys = PropertySet::with({size, weight});
  ZTUMutablePointerSet<ZTSStyle> kept;
  std::string archive;

 private:
  Ref<Watcher> mWatcher = make<Watcher>();
  NotificationListener mListener;
};

}  // namespace zt::testing
