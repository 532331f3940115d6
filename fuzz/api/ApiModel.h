// SPDX-License-Identifier: MIT
#pragma once

#include "ApiStyles.h"
#include "Bytes.h"

#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStyleObserver.h>
#include <ztstyles/ZTSStylesheet.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zt::fuzzing {

/// A stylesheet below another, with styles of every class, an observer of styles, one of stylesheets, a listener and a
/// host. Each step is one operation in a group of its own. What is called meanwhile may perform another or throw: the
/// bytes decide. After every step the model must be valid.
class ApiModel {
 public:
  explicit ApiModel(Bytes bytes);
  ~ApiModel();
  ApiModel(const ApiModel&) = delete;
  ApiModel& operator=(const ApiModel&) = delete;

  [[nodiscard]] bool isDone() const noexcept { return mBytes.isEmpty(); }
  void step();
  /// Undoing everything leads to the first state, redoing everything to the last.
  void goBackAndForth();

 private:
  struct Operation;
  class Host;
  class SheetWatcher final : public ZTSStylesheetObserver {
   public:
    void addedStyleToStylesheet(ZTSStyle&, ZTSStylesheet&) override { disturb("added"); }
    void removedStyleFromStylesheet(ZTSStyle&, ZTSStylesheet&) override { disturb("removed"); }
    void changedParentOfStylesheet(ZTSStylesheet&) override { disturb("parent"); }
  };
  /// An object, as validation asks of observers.
  class Watcher final : public NSObject, public ZTSStyleObserver {
   public:
    void stylePropertiesChanged(const ZTSStyleChangeInfo&) override { disturb("observer"); }
  };

  static const std::vector<Operation>& operations();
  void performOne();
  void disturbed(const char* hook);
  /// Prints what happens where ZT_FUZZ_TRACE is set, to read a finding by.
  void trace(const char* what) const;
  void check();
  void adopt();
  [[nodiscard]] std::string state() const;
  void readAgain() const;

  Ref<ZTSStyle> any();
  Ref<ZTSStyle> anyHeld();
  StringRef identifier();
  PropertyKey key();
  Ref<PropertySet> keys();
  Ref<NSObject> value(PropertyKey key);
  Ref<PropertyMap> values();
  ZTSStylesheet& sheet();
  void addNew();
  void visitOther();

  Bytes mBytes;
  std::unique_ptr<Host> mHost;
  Ref<SheetWatcher> mSheetWatcher;
  Ref<Watcher> mWatcher;
  Ref<ZTSStylesheet> mUpper, mLower, mOther;
  std::vector<Ref<ZTSStyle>> mPool;
  std::vector<Ref<ZTSStyle>> mUses;
  std::optional<NotificationListener> mListener;
  std::string mFirst;
  int mNesting = 0;
  bool mIsCalm = true;
  bool mIsAway = false;  // below another stylesheet, where nothing that is done could be undone after the return
};

}  // namespace zt::fuzzing
