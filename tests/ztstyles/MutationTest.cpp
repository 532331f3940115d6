// Setting and removing values: what is stored, what is told, and that undo is exact.

#include "Scene.h"

#include <platform/NSException.h>

#include <functional>

namespace zt::testing {
namespace {

std::vector<std::string> flat(const NSUndoManager::ActionNames& groups) {
  std::vector<std::string> names;
  for (const auto& group : groups) names.insert(names.end(), group.begin(), group.end());
  return names;
}

/// A style "h1" with own values whose parent "body" has some too, and a recorder on it.
struct Heading : Scene {
  TestStyle& body = style("body", {}, {{size, 10}, {weight, 20}, {list, NSNull::null()}});
  TestStyle& h1 = style("h1", "body", {{size, 1}, {colour, NSNull::null()}});
  StyleRecorder recorder{log};
  Heading() { h1.addObserver(&recorder); }

  Ref<PropertyMap> own() const {
    return h1.overridePropertyMap() ? h1.overridePropertyMap()->copy() : PropertyMap::make();
  }
  Log takeLog() { return std::exchange(log, {}); }
};

struct FourWays {
  const char* name;
  std::function<void(TestStyle&)> change;
  Ref<PropertyMap> after;  // the own values
  Log done;                // what the recorder is told
  Log undone;
  Log redone;
  std::vector<std::string> inverses;  // in the order of registration
};

/// Does the change, undoes it, redoes it, and does it once more while nothing is told.
void tryFourWays(const FourWays& way) {
  SCOPED_TRACE(way.name);
  Heading scene;
  const Ref<PropertyMap> before = scene.own();
  const auto expectOwn = [&](const Ref<PropertyMap>& wanted) {
    EXPECT_TRUE(scene.own()->isEqual(*wanted)) << describe(*scene.own());
  };
  scene.host.undo->performInGroup([&] { way.change(scene.h1); });
  expectOwn(way.after);
  EXPECT_EQ(scene.takeLog(), way.done);
  EXPECT_EQ(flat(scene.host.undo->undoActionNames()), way.inverses);
  scene.undo();
  expectOwn(before);
  EXPECT_EQ(scene.takeLog(), way.undone);
  scene.redo();
  expectOwn(way.after);
  EXPECT_EQ(scene.takeLog(), way.redone);
  EXPECT_EQ(flat(scene.host.undo->undoActionNames()).size(), way.inverses.size());
  scene.undo();
  scene.takeLog();

  scene.sheet->setIsChangeCommunicationEnabled(false);
  scene.host.undo->performInGroup([&] { way.change(scene.h1); });
  expectOwn(way.after);
  scene.undo();
  expectOwn(before);
  EXPECT_EQ(scene.takeLog(), Log{});
}

TEST(MutationTest, StoresTellsAndIsTakenBackExactly) {
  const char* set = "setValue:forProperty:";
  const char* setAll = "setValuesForProperties:";
  const char* remove = "removeValueForProperty:";
  const char* removeAll = "removeValuesForProperties:";
  const char* lockedSet = "lockedStyleSetValuesForProperties:notificationFlags:";
  const char* lockedRemove = "lockedStyleRemoveValuesForProperties:notificationFlags:";
  const Ref<PropertyMap> unchanged = mapOf({{size, 1}, {colour, NSNull::null()}});
  const Ref<PropertyMap> both = mapOf({{size, 2}, {colour, NSNull::null()}, {weight, 3}});
  const Ref<PropertyMap> given = mapOf({{size, 2}, {weight, 3}});
  const auto setLocked = [&](std::int32_t flags) {
    return [=](TestStyle& s) { s.lockedStyleSetValuesForProperties(*given, flags); };
  };
  const Log told = {"h1: size<1 weight<20"};
  const Log toldBack = {"h1: weight<3", "h1: size<2"};
  const Log toldAgain = {"h1: size<1", "h1: weight<20"};
  for (const FourWays& way : std::initializer_list<FourWays>{
           {"replace", [](TestStyle& s) { s.setValueForProperty(Value(2), size); }, mapOf({{size, 2}, {colour, NSNull::null()}}),
            {"h1: size<1"}, {"h1: size<2"}, {"h1: size<1"}, {set}},
           {"an equal value", [](TestStyle& s) { s.setValueForPropertyWithScope(Value(1), size, nullptr); }, unchanged,
            {"h1: size<1"}, {"h1: size<1"}, {"h1: size<1"}, {set}},
           {"a new value", [](TestStyle& s) { s.setValueForProperty(Value(3), weight); },
            mapOf({{size, 1}, {colour, NSNull::null()}, {weight, 3}}), {"h1: weight<20"}, {"h1: weight<3"}, {"h1: weight<20"}, {remove}},
           {"over no value", [](TestStyle& s) { s.setValueForProperty(Value("red"), colour); }, mapOf({{size, 1}, {colour, "red"}}),
            {"h1: colour<<null>"}, {"h1: colour<red"}, {"h1: colour<<null>"}, {set}},
           {"none", [](TestStyle& s) { s.setValueForProperty({}, size); }, mapOf({{size, NSNull::null()}, {colour, NSNull::null()}}),
            {"h1: size<1"}, {"h1: size<<null>"}, {"h1: size<1"}, {set}},
           // The one takes the parent's effective value as the old one, the other the raw one.
           {"one over an inherited no value", [](TestStyle& s) { s.setValueForProperty(Value(4), list); },
            mapOf({{size, 1}, {colour, NSNull::null()}, {list, 4}}), {"h1: list<"}, {"h1: list<4"}, {"h1: list<"}, {remove}},
           {"several over it", [](TestStyle& s) { s.setValuesForProperties(*mapOf({{list, 4}})); },
            mapOf({{size, 1}, {colour, NSNull::null()}, {list, 4}}), {"h1: list<<null>"}, {"h1: list<4"}, {"h1: list<<null>"}, {removeAll}},
           {"several", [&](TestStyle& s) { s.setValuesForPropertiesWithScope(*given, nullptr); }, both, told, toldBack, toldAgain, {setAll, removeAll}},
           {"the own live map", [](TestStyle& s) { s.setValuesForProperties(*s.overridePropertyMap()); }, unchanged,
            {"h1: size<1 colour<<null>"}, {"h1: size<1 colour<<null>"}, {"h1: size<1 colour<<null>"}, {setAll}},
           {"an empty map", [](TestStyle& s) { s.setValuesForProperties(*PropertyMap::make()); }, unchanged, {}, {}, {}, {}},
           {"remove", [](TestStyle& s) { s.removeValueForProperty(colour); }, mapOf({{size, 1}}), {"h1: colour<<null>"},
            {"h1: colour<"}, {"h1: colour<<null>"}, {set}},
           {"remove nothing", [](TestStyle& s) { s.removeValueForProperty(weight); s.removeValuesForProperties(*PropertySet::with({weight, list})); },
            unchanged, {}, {}, {}, {}},
           {"remove what is there", [](TestStyle& s) { s.removeValuesForProperties(*PropertySet::with({weight, size})); },
            mapOf({{colour, NSNull::null()}}), {"h1: size<1"}, {"h1: size<10"}, {"h1: size<1"}, {setAll}},
           {"remove all that is inspected", [](TestStyle& s) { s.removeValuesForProperties(s.inspectableProperties()); }, PropertyMap::make(),
            {"h1: size<1 colour<<null>"}, {"h1: size<10 colour<"}, {"h1: size<1 colour<<null>"}, {setAll}},
           {"silently", setLocked(0), both, {}, {}, {}, {lockedSet, lockedRemove}},
           {"on change", setLocked(kZTSStyleNotifyOnChange), both, told, {}, {}, {lockedSet, lockedRemove}},
           {"on undo", setLocked(kZTSStyleNotifyOnUndo), both, {}, toldBack, {}, {lockedSet, lockedRemove}},
           {"on redo", setLocked(kZTSStyleNotifyOnRedo), both, {}, {}, toldAgain, {lockedSet, lockedRemove}},
           {"the own live map, locked", [](TestStyle& s) { s.lockedStyleSetValuesForProperties(*s.overridePropertyMap(), 7); }, unchanged,
            {"h1: size<1 colour<<null>"}, {"h1: size<1 colour<<null>"}, {"h1: size<1 colour<<null>"}, {lockedSet}},
           {"remove, in all phases", [](TestStyle& s) { s.lockedStyleRemoveValuesForProperties(*PropertySet::with({size, label}), 7); },
            mapOf({{colour, NSNull::null()}}), {"h1: size<1"}, {"h1: size<10"}, {"h1: size<1"}, {lockedSet}}}) {
    tryFourWays(way);
  }
}

TEST(MutationTest, RefusesWhatTheClassDoesNotAccept) {
  Heading scene;
  const Ref<PropertyMap> before = scene.own();
  const Ref<PropertyMap> bad = mapOf({{weight, 5}, {size, -1}});
  const std::string text = "] Attempted to set an invalid value -1 for property size.";
  const auto reasonOf = [](const std::function<void()>& change) {
    try {
      change();
    } catch (const NSInternalInconsistencyException& error) {
      return error.reason();
    }
    return std::string("nothing raised");
  };
  EXPECT_EQ(reasonOf([&] { scene.h1.setValueForProperty(Value(-1), size); }), "[ZTSStyle setValue:forProperty:" + text);
  EXPECT_EQ(reasonOf([&] { scene.h1.setValuesForProperties(*bad); }), "[ZTSStyle setValuesForProperties:" + text);
  EXPECT_EQ(reasonOf([&] { scene.h1.setValueForProperty(Value(1), PropertyKey()); }),
            "[ZTSStyle setValue:forProperty:] Attempted to set an invalid value 1 for property (null).");
  EXPECT_EQ(reasonOf([&] { make<ZTSStyle>()->setValueForProperty({}, size); }),
            "[ZTSStyle setValue:forProperty:] Attempted to set an invalid value (null) for property size.");
  EXPECT_TRUE(scene.own()->isEqual(*before));
  EXPECT_FALSE(scene.host.undo->canUndo());

  ZTUAssertionRecorder reports;
  scene.h1.lockedStyleSetValuesForProperties(*bad, 0);
  EXPECT_EQ(reports.descriptions(), Log{"Attempted to set an invalid value -1 for property size."});
  EXPECT_EQ(valueOf(scene.h1, weight) + valueOf(scene.h1, size), 4) << "all entries are stored";

  EXPECT_FALSE(scene.h1.canMutateViaAction("shout"));
  try {
    scene.h1.mutateViaActionArguments("shout", nullptr);
    ADD_FAILURE() << "raised nothing";
  } catch (const NSInvalidArgumentException& error) {
    EXPECT_EQ(error.reason(), "Style cannot perform the action shout");
  }
}

/// Asked before every change, and told none for the sentinel where several are set.
class Asking : public TestStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<Asking>("Asking", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
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
  EXPECT_EQ(style.asked, (Log{"1", "none", "set", "none"}));
  EXPECT_TRUE(style.overridesProperty(size) && style.overridesProperty(weight));
  EXPECT_FALSE(scene.host.undo->canUndo());

  // An undo manager of its own serves a style without stylesheet; its inverses are the overridden operations.
  style.own = make<NSUndoManager>();
  style.setValueForProperty(Value(5), size);
  style.lockedStyleSetValuesForProperties(*mapOf({{size, 6}}), 0);
  style.own->disableUndoRegistration();
  style.removeValueForProperty(weight);
  style.own->enableUndoRegistration();
  style.asked.clear();
  style.own->undo();
  style.own->undo();
  EXPECT_EQ(style.asked, (Log{"5", "set", "none"}));
  EXPECT_TRUE(isNull(style.p_overrideValueForProperty(size)));
  EXPECT_FALSE(style.own->canUndo() || style.overridesProperty(weight));
  style.own->removeAllActions();  // they hold the style, which holds them
}

}  // namespace
}  // namespace zt::testing
