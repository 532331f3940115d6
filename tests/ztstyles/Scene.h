// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <platform/NSUndoManager.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

/// The scene that the tests of the style model play in: style classes with a small registry, a host with a
/// document and an undo manager, a stylesheet, and a log of what was called.
namespace zt::testing {

inline const PropertyKey size{"size"};
inline const PropertyKey weight{"weight"};
inline const PropertyKey colour{"colour"};
inline const PropertyKey list{"list"};    // an aggregate's referenced style
inline const PropertyKey label{"label"};  // another one

/// `3`, `2.5`, `true`, `"text"` and styles as property values.
struct Value {
  Value(int integer) : object(NSNumber::withInteger(integer)) {}
  Value(double real) : object(NSNumber::withReal(real)) {}
  Value(bool boolean) : object(NSNumber::withBool(boolean)) {}
  Value(const char* text) : object(NSString::make(text)) {}
  Value(ZTSStyle& style) : object(&style) {}
  Value(NSNull* null) : object(null) {}
  Value(Ref<NSObject> any) : object(std::move(any)) {}
  operator Ref<NSObject>() const { return object; }
  Ref<NSObject> object;
};

inline Ref<PropertyMap> mapOf(std::initializer_list<std::pair<PropertyKey, Value>> entries) {
  Ref<PropertyMap> map = PropertyMap::make(entries.size());
  for (const auto& [key, value] : entries) map->set(key, value.object);
  return map;
}

/// Accepts every value but negative numbers.
inline bool acceptsValue(const NSObject* value) {
  const NSNumber* number = NSNumber::from(value);
  return number == nullptr || number->isBool() || number->realValue() >= 0;
}

inline Ref<const PropertySet> sceneKeys() { return PropertySet::with({size, weight, colour, list, label}); }

class TestStyle : public ZTSStyleOf<TestStyle> {
 public:
  static constexpr const char* kClassName = "TestStyle";
  static Ref<const PropertySet> classKeys() { return sceneKeys(); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override { return acceptsValue(value); }
};

class TestAggregate : public ZTSStyleOf<TestAggregate, ZTSAggregateStyle> {
 public:
  static constexpr const char* kClassName = "TestAggregate";
  static Ref<const PropertySet> classKeys() { return sceneKeys(); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override { return acceptsValue(value); }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{list, label};
    return keys;
  }
};

using Log = std::vector<std::string>;

class TestDocument : public NSDocument {};

class TestHost : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return undo.get(); }
  NSDocument* document() const override { return hasDocument ? theDocument.get() : nullptr; }
  bool willRemoveUnusedStyle(ZTSStyle& style) override {
    return removesUnused && !(keepsIdentified && style.isIdentified());
  }
  void didRemoveUnusedStyles() override { ++cleanups; }

  Ref<NSUndoManager> undo = make<NSUndoManager>();
  Ref<TestDocument> theDocument = make<TestDocument>();
  bool hasDocument = true;
  bool removesUnused = true;
  bool keepsIdentified = false;
  int cleanups = 0;
};

/// Notes which styles of a stylesheet and its ancestors come and go.
class SheetRecorder : public ZTSStylesheetObserver {
 public:
  explicit SheetRecorder(Log& log, std::string name = "observer") : mLog(log), mName(std::move(name)) {}
  void addedStyleToStylesheet(ZTSStyle& style, ZTSStylesheet&) override {
    mLog.push_back(mName + " added " + style.identifier().text());
  }
  void removedStyleFromStylesheet(ZTSStyle& style, ZTSStylesheet&) override {
    mLog.push_back(mName + " removed " + style.identifier().text());
  }
  void changedParentOfStylesheet(ZTSStylesheet&) override { mLog.push_back(mName + " parent"); }

 private:
  Log& mLog;
  std::string mName;
};

/// What a change record says: "h1: size<10 weight<1", each changed key with its old value.
inline std::string textOf(const ZTSStyleChangeInfo& change) {
  std::string text = (change.style() != nullptr ? change.style()->identifier().text() : "none") + ":";
  change.changedProperties()->forEach([&](PropertyKey key) {
    const NSObject* old = change.oldPropertyMap()->find(key);
    text += " " + key.string().text() + "<" + (old != nullptr ? old->description() : "");
  });
  return text;
}

/// Notes the changes of the styles that it observes, and then does what it is made for.
class StyleRecorder : public ZTSStyleObserver {
 public:
  explicit StyleRecorder(Log& log, std::function<void(const ZTSStyleChangeInfo&)> call = {})
      : mLog(log), mCall(std::move(call)) {}
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    mLog.push_back(textOf(change));
    if (mCall) mCall(change);
  }

 private:
  Log& mLog;
  std::function<void(const ZTSStyleChangeInfo&)> mCall;
};

/// One document: `scene.style("h1", "body", {{size, 18}})`. Styles stay alive with the scene.
class Scene {
 public:
  explicit Scene(ZTSStylesheet* parent = nullptr) {
    if (parent != nullptr) sheet->setParent(Ref<ZTSStylesheet>(parent));
    host.undo->removeAllActions();
  }
  /// Undo actions hold the styles that they concern. The stylesheet, which frees styles that refer to one another in a
  /// cycle, must not find them held when it goes.
  ~Scene() {
    host.undo->removeAllActions();
    if (sheet) sheet->removeObserver(&mRecorder);
  }

  /// A new style in the stylesheet; `identifier` and `parent` absent for none.
  template <class T = TestStyle>
  T& style(StringRef identifier, StringRef parent = {},
           std::initializer_list<std::pair<PropertyKey, Value>> values = {}, bool locked = false) {
    T& made = detached<T>(std::move(identifier), std::move(parent), values, locked);
    host.undo->disableUndoRegistration();
    add(made);
    host.undo->enableUndoRegistration();
    return made;
  }
  template <class T = TestStyle>
  T& detached(StringRef identifier = {}, StringRef parent = {},
              std::initializer_list<std::pair<PropertyKey, Value>> values = {}, bool locked = false) {
    const Ref<PropertyMap> map = mapOf(values);
    Ref<T> made = make<T>({.identifier = std::move(identifier),
                           .parentIdentifier = std::move(parent),
                           .overridePropertyMap = map.get(),
                           .isLocked = locked});
    mKept.push_back(made);
    return *made;
  }
  /// Identified styles "0", "1" and so on, each the parent of the next, with their number as a value. Answers them.
  template <class T = TestStyle>
  std::vector<T*> chain(int length) {
    std::vector<T*> all;
    for (int level = 0; level < length; ++level) {
      const StringRef above = level > 0 ? StringRef(std::to_string(level - 1)) : StringRef();
      all.push_back(&style<T>(std::to_string(level), above, {{level == 0 ? size : weight, level}}));
    }
    return all;
  }
  void add(ZTSStyle& style) { sheet->addStyle(Ref<ZTSStyle>(&style)); }
  void remove(ZTSStyle& style) { sheet->removeStyle(Ref<ZTSStyle>(&style)); }
  /// From now on the log says which styles come and go.
  void watch() { sheet->addObserver(&mRecorder); }
  void undo() { host.undo->undo(); }
  void redo() { host.undo->redo(); }

  TestHost host;
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&host);
  Log log;

 private:
  SheetRecorder mRecorder{log};
  std::deque<Ref<ZTSStyle>> mKept;
};

/// The effective value of a key as an integer; -1 for none.
inline int valueOf(const ZTSStyle& style, PropertyKey key) {
  const Ref<NSObject> value = style.valueForProperty(key);
  const NSNumber* number = NSNumber::from(value.get());
  return number != nullptr ? static_cast<int>(number->integerValue()) : -1;
}

}  // namespace zt::testing
