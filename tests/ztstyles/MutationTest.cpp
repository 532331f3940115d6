// SPDX-License-Identifier: MIT

// Setting and removing values: what is stored, what is told, and that undo is exact.

#include "Scene.h"

#include <platform/NSException.h>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

std::string joined(const Log& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : " | ") + line;
  return text;
}

/// A style "h1" with own values whose parent "body" has some too, and a recorder on it.
struct Heading : Scene {
  TestStyle& body = style("body", {}, {{size, 10}, {weight, 20}, {list, NSNull::null()}});
  TestStyle& h1 = style("h1", "body", {{size, 1}, {colour, NSNull::null()}});
  StyleRecorder recorder{log};
  Heading() { h1.addObserver(&recorder); }

  std::string own() const {
    std::vector<std::string> entries;
    if (const Ref<const PropertyMap> map = h1.overridePropertyMap()) {
      for (const auto& [key, value] : *map) entries.push_back(key.string().text() + "=" + value->description());
    }
    std::sort(entries.begin(), entries.end());
    return joined(entries);
  }
  std::string inverses() const {
    Log names;
    for (const auto& group : host.undo->undoActionNames()) names.insert(names.end(), group.begin(), group.end());
    return joined(names);
  }
  /// What the recorder was told since it was last asked: the changes, without the style's name.
  std::string told() {
    for (std::string& line : log) line.erase(0, std::string("h1: ").size());
    return joined(std::exchange(log, {}));
  }
};

struct FourWays {
  std::function<void(TestStyle&)> change;
  std::string own;                      // afterwards
  std::string told;                     // to the recorder
  std::string undone;                   // what it is told of the undo
  std::string inverses;                 // in the order of registration
  std::optional<std::string> redone{};  // what it is told of the redo, where that is not what it was told at first
};

/// Does the change, undoes it, redoes it, and does it once more while nothing is told.
void tryFourWays(const FourWays& way) {
  SCOPED_TRACE(way.own + " by the inverse of " + way.inverses);
  Heading scene;
  const std::string before = scene.own();
  const auto expect = [&](const std::string& own, const std::string& told) {
    EXPECT_EQ(scene.own(), own);
    EXPECT_EQ(scene.told(), told);
  };
  const auto change = [&] { scene.host.undo->performInGroup([&] { way.change(scene.h1); }); };
  change();
  expect(way.own, way.told);
  EXPECT_EQ(scene.inverses(), way.inverses);
  scene.undo();
  expect(before, way.undone);
  scene.redo();
  expect(way.own, way.redone.value_or(way.told));
  scene.undo();
  scene.told();

  scene.sheet->setIsChangeCommunicationEnabled(false);
  change();
  expect(way.own, "");
  scene.undo();
  expect(before, "");
}

TEST(MutationTest, StoresTellsAndIsTakenBackExactly) {
  const std::string set = "setValue:forProperty:", setAll = "setValuesForProperties:";
  const std::string remove = "removeValueForProperty:", removeAll = "removeValuesForProperties:";
  const std::string before = "colour=<null> | size=1";
  const auto setOne = [](Value value, PropertyKey key) {
    return [=](TestStyle& s) { s.setValueForPropertyWithScope(value, key, nullptr); };
  };
  const auto setMany = [](const Ref<PropertyMap>& map) {
    return [=](TestStyle& s) { s.setValuesForPropertiesWithScope(map ? *map : *s.overridePropertyMap(), nullptr); };
  };
  const auto removeOne = [](PropertyKey key) { return [=](TestStyle& s) { s.removeValueForProperty(key); }; };
  const auto removeMany = [](const Ref<PropertySet>& keys) {
    return [=](TestStyle& s) { s.removeValuesForProperties(keys ? *keys : s.inspectableProperties()); };
  };
  for (const FourWays& way : std::initializer_list<FourWays>{
           {setOne(1, size), before, "size<1", "size<1", set},
           {setOne(3, weight), before + " | weight=3", "weight<20", "weight<3", remove},
           {setOne("red", colour), "colour=red | size=1", "colour<<null>", "colour<red", set},
           {setOne(Ref<NSObject>(), size), "colour=<null> | size=<null>", "size<1", "size<<null>", set},
           // The one takes the parent's effective value as the old one, the other the raw one.
           {setOne(4, list), "colour=<null> | list=4 | size=1", "list<", "list<4", remove},
           {setMany(mapOf({{list, 4}})), "colour=<null> | list=4 | size=1", "list<<null>", "list<4", removeAll},
           {setMany(mapOf({{size, 2}, {weight, 3}})), "colour=<null> | size=2 | weight=3", "size<1 weight<20",
            "weight<3 | size<2", setAll + " | " + removeAll, "size<1 | weight<20"},
           {setMany({}), before, "size<1 colour<<null>", "size<1 colour<<null>", setAll},  // the own live map
           {setMany(PropertyMap::make()), before},
           {removeOne(colour), "size=1", "colour<<null>", "colour<", set},
           {removeOne(weight), before},
           {removeMany(PropertySet::with({weight, list})), before},
           {removeMany(PropertySet::with({weight, size})), "colour=<null>", "size<1", "size<10", setAll},
           {removeMany({}), "", "size<1 colour<<null>", "size<10 colour<", setAll}}) {
    tryFourWays(way);
  }
}

TEST(MutationTest, LockedStyleChangesTellInThePhasesOfTheirFlags) {
  const std::string set = "lockedStyleSetValuesForProperties:notificationFlags:";
  const std::string remove = "lockedStyleRemoveValuesForProperties:notificationFlags:";
  const Ref<PropertyMap> given = mapOf({{size, 2}, {weight, 3}});
  const Ref<PropertySet> keys = PropertySet::with({size, label});
  for (int flags = 0; flags < 8; ++flags) {
    const auto in = [&](int phase, const char* told) { return (flags & phase) != 0 ? told : ""; };
    tryFourWays({[&](TestStyle& s) { s.lockedStyleSetValuesForProperties(*given, flags); },
                 "colour=<null> | size=2 | weight=3", in(kZTSStyleNotifyOnChange, "size<1 weight<20"),
                 in(kZTSStyleNotifyOnUndo, "weight<3 | size<2"), set + " | " + remove,
                 in(kZTSStyleNotifyOnRedo, "size<1 | weight<20")});
    tryFourWays({[&](TestStyle& s) { s.lockedStyleRemoveValuesForProperties(*keys, flags); }, "colour=<null>",
                 in(kZTSStyleNotifyOnChange, "size<1"), in(kZTSStyleNotifyOnUndo, "size<10"), set,
                 in(kZTSStyleNotifyOnRedo, "size<1")});
  }
}

TEST(MutationTest, RefusesWhatTheClassDoesNotAccept) {
  Heading scene;
  const std::string before = scene.own();
  const Ref<PropertyMap> bad = mapOf({{weight, 5}, {size, -1}});
  const auto reasonOf = [](const std::function<void()>& change) {
    try {
      change();
    } catch (const NSException& error) {
      return error.name() + " " + error.reason();
    }
    return std::string("nothing raised");
  };
  const std::string start = "NSInternalInconsistencyException [ZTSStyle ", end = "] Attempted to set an invalid value ";
  EXPECT_EQ(reasonOf([&] { scene.h1.setValueForProperty(Value(-1), size); }),
            start + "setValue:forProperty:" + end + "-1 for property size.");
  EXPECT_EQ(reasonOf([&] { scene.h1.setValuesForProperties(*bad); }),
            start + "setValuesForProperties:" + end + "-1 for property size.");
  EXPECT_EQ(reasonOf([&] { scene.h1.setValueForProperty(Value(1), PropertyKey()); }),
            start + "setValue:forProperty:" + end + "1 for property (null).");
  EXPECT_EQ(reasonOf([&] { make<ZTSStyle>()->setValueForProperty({}, size); }),
            start + "setValue:forProperty:" + end + "(null) for property size.");
  EXPECT_FALSE(scene.h1.canMutateViaAction("shout"));
  EXPECT_EQ(reasonOf([&] { scene.h1.mutateViaActionArguments("shout", nullptr); }),
            "NSInvalidArgumentException Style cannot perform the action shout");
  EXPECT_EQ(scene.own(), before);
  EXPECT_FALSE(scene.host.undo->canUndo());

  ZTUAssertionRecorder reports;
  scene.h1.lockedStyleSetValuesForProperties(*bad, 0);
  EXPECT_EQ(reports.descriptions(), Log{"Attempted to set an invalid value -1 for property size."});
  EXPECT_EQ(scene.own(), "colour=<null> | size=-1 | weight=5") << "all entries are stored";
}

/// Asked before every change, and told none for the sentinel where several are set.
struct Asking : ZTSStyleOf<Asking, TestStyle> {
  static constexpr const char* kClassName = "Asking";
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    asked.push_back(value != nullptr ? value->description() : "none");
    return true;
  }
  NSUndoManager* undoManager() const override { return own.get(); }
  void setValueForProperty(Ref<NSObject> value, PropertyKey key) override {
    asked.push_back("set");
    TestStyle::setValueForProperty(std::move(value), key);
  }
  mutable Log asked;
  Ref<NSUndoManager> own;
};

TEST(MutationTest, WorksDetachedAndThroughWhatAClassOverrides) {
  Scene scene;
  Asking& style = scene.detached<Asking>();
  style.setValuesForProperties(*mapOf({{size, 1}, {weight, NSNull::null()}}));
  style.setValueForPropertyWithScope({}, size, nullptr);
  EXPECT_EQ(std::exchange(style.asked, {}), (Log{"1", "none", "set", "none"}));
  EXPECT_TRUE(style.overridesProperty(size));
  EXPECT_TRUE(style.overridesProperty(weight));

  // An undo manager of its own serves a style without stylesheet; its inverses are the overridden operations.
  style.own = make<NSUndoManager>();
  style.setValueForProperty(Value(5), size);
  style.own->disableUndoRegistration();
  style.removeValueForProperty(weight);
  style.own->enableUndoRegistration();
  style.asked.clear();
  style.own->undo();
  EXPECT_EQ(style.asked, (Log{"set", "none"}));
  EXPECT_TRUE(isNull(style.p_overrideValueForProperty(size)));
  EXPECT_FALSE(style.own->canUndo());
  EXPECT_FALSE(style.overridesProperty(weight));

  // What could be redone is let go of by the first of two registrations, and the undo manager with it.
  struct Last : NSObject {
    explicit Last(Asking& style) : mStyle(style) {}
    ~Last() override { mStyle.own.reset(); }
    Asking& mStyle;
  };
  style.own->registerUndo("once", make<Last>(style),
                          [&](Last& last) { style.own->registerUndo("again", Ref<Last>(&last), [](Last&) {}); });
  style.own->undo();
  style.setValuesForProperties(*mapOf({{size, 1}, {weight, 2}}));
  EXPECT_EQ(style.own, nullptr);
}

/// Notes what passes the hooks of a change, and may refuse it.
class Gated : public ZTSStyleOf<Gated, TestStyle> {
 public:
  static constexpr const char* kClassName = "Gated";
  void entriesWillChange(ZTSEntriesChange& change) override {
    std::string keys;
    change.forEachKey([&](PropertyKey key) { keys += ' ' + std::string(key.view()); });
    log.push_back(std::string(change.operation) + keys);
    if (isClosed) throw std::runtime_error("closed");
  }
  void entriesDidChange(const ZTSEntriesChange& change) override {
    log.push_back(std::string("did ") + (change.isRemoval ? "remove" : "store"));
  }
  Log log;
  bool isClosed = false;
};

TEST(MutationTest, EveryWayToChangeEntriesPassesBothHooks) {
  Scene scene;
  Gated& style = scene.style<Gated>("gated");
  const Ref<PropertyMap> map = mapOf({{size, 1}, {weight, 2}});
  const Ref<PropertySet> keys = PropertySet::with({size});
  const std::pair<std::string, std::function<void()>> ways[] = {
      {"setValue:forProperty: size", [&] { style.setValueForProperty(Value(1), size); }},
      {"setValuesForProperties: size weight", [&] { style.setValuesForProperties(*map); }},
      {"lockedStyleSetValuesForProperties:notificationFlags: size weight",
       [&] { style.lockedStyleSetValuesForProperties(*map, 0); }},
      {"removeValueForProperty: size", [&] { style.removeValueForProperty(size); }},
      {"removeValuesForProperties: size", [&] { style.removeValuesForProperties(*keys); }},
      {"lockedStyleRemoveValuesForProperties:notificationFlags: size",
       [&] { style.lockedStyleRemoveValuesForProperties(*keys, 0); }},
      {"unconditionalRemoveValueForProperty: size", [&] { style.unconditionalRemoveValueForProperty(size); }}};
  for (const auto& [told, change] : ways) {
    const std::string did = told.find("emove") != std::string::npos ? "did remove" : "did store";
    style.log.clear();
    change();
    EXPECT_THAT(style.log, ElementsAre(told, did));

    const std::string before = describe(*style.overridePropertyMap());
    const std::size_t steps = scene.host.undo->undoGroupCount();
    style.log.clear();
    style.isClosed = true;
    EXPECT_THROW(change(), std::runtime_error) << told;
    style.isClosed = false;
    EXPECT_THAT(style.log, ElementsAre(told, did));
    EXPECT_EQ(describe(*style.overridePropertyMap()), before);
    EXPECT_EQ(scene.host.undo->undoGroupCount(), steps);
  }
}

}  // namespace
}  // namespace zt::testing
