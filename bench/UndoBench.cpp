// SPDX-License-Identifier: MIT

// What registering the inverse of a change adds to the change, and what performing inverses costs.

#include <bench/BenchSupport.h>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <platform/NSNotificationCenter.h>
#include <platform/NSNumber.h>
#include <platform/NSUndoManager.h>
#include <platform/PropertyMap.h>
#include <platform/ZTNesting.h>

#include <memory>

namespace zt {
namespace {

// As little as an object with three values and undo can be.
struct Bag final : NSObject {
  Bag() {
    for (const char* key : {"a", "b", "c"}) map->set(PropertyKey(key), NSNumber::withInteger(0));
  }
  void store(const Ref<NSObject>& value, PropertyKey key) { map->set(key, value); }
  void setValue(const Ref<NSObject>& value, PropertyKey key) {
    Ref<NSObject> old(map->find(key));
    manager->registerUndo("setValue:forProperty:", Ref<Bag>(this),
                          [old = std::move(old), key](Bag& bag) { bag.setValue(old, key); });
    map->set(key, value);
  }
  const Ref<PropertyMap> map = PropertyMap::make(3);
  Ref<NSUndoManager> manager = make<NSUndoManager>();
};

const PropertyKey kKey("b");

struct Scene {
  const Ref<Bag> bag = make<Bag>();
  const Ref<NSObject> values[2] = {NSNumber::withInteger(1), NSNumber::withInteger(2)};
  std::size_t turn = 0;

  Scene() { bag->manager->beginUndoGrouping(); }
  ~Scene() { bag->manager->removeAllActions(); }  // its actions hold the bag that holds it
  const Ref<NSObject>& next() { return values[++turn & 1]; }
  void set(std::int64_t times) {
    for (std::int64_t each = 0; each < times; ++each) bag->setValue(next(), kKey);
  }
};

void BareStore(benchmark::State& state) {
  Scene scene;
  for (auto each : state) scene.bag->store(scene.next(), kKey);
}
BENCHMARK(BareStore);

void StoreWithInverse(benchmark::State& state) {
  Scene scene;
  for (auto each : state) {
    scene.set(1);
    if (scene.turn % (1 << 16) != 0) continue;
    state.PauseTiming();
    scene.bag->manager->removeAllActions();
    state.ResumeTiming();
  }
}
BENCHMARK(StoreWithInverse);

void BytesPerAction(benchmark::State& state) {
  for (auto each : state) {
    Scene scene;
    const auto before = mallinfo2();
    scene.set(state.range(0));
    const auto after = mallinfo2();
    // The large blocks are counted apart.
    const auto grown = (after.uordblks + after.hblkhd) - (before.uordblks + before.hblkhd);
    state.counters["bytes"] = static_cast<double>(grown) / static_cast<double>(state.range(0));
  }
}
BENCHMARK(BytesPerAction)->Arg(1'000'000)->Iterations(1);

void Undo(benchmark::State& state) {
  for (auto each : state) {
    state.PauseTiming();
    auto scene = std::make_unique<Scene>();
    scene->set(state.range(0));
    scene->bag->manager->endUndoGrouping();
    state.ResumeTiming();
    scene->bag->manager->undo();
    scene->bag->manager->redo();
    state.PauseTiming();
    scene.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * 2 * state.range(0));
}
BENCHMARK(Undo)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// One action a group, a budget of 1000 groups: each registration drops an old group.
void GroupPerAction(benchmark::State& state) {
  Scene scene;
  scene.bag->manager->endUndoGrouping();
  scene.bag->manager->setLevelsOfUndo(1000);
  for (auto each : state) {
    scene.bag->manager->beginUndoGrouping();
    scene.set(1);
    scene.bag->manager->endUndoGrouping();
  }
}
BENCHMARK(GroupPerAction);

const bool kCompared = bench::compare({.name = "StoreWithInverse", .baseline = "BareStore"}) &&
                       bench::compare({.name = "Undo/1000000", .baseline = "Undo/100000", .limit = 15});

template <void (*Operation)(Scene&)>
std::function<void()> prepared() {
  auto scene = std::make_shared<Scene>();
  return [scene] { Operation(*scene); };
}

// The limits are those of the store with its inverse: six times the bare store, which is counted first.
const bool kCounted =
    bench::countInstructions(
        {.name = "bare store", .prepare = prepared<[](Scene& it) { it.bag->store(it.next(), kKey); }>}) &&
    bench::countInstructions({.name = "store with its inverse registered",
                              .prepare = prepared<[](Scene& it) { it.set(1); }>,
                              .limit = 6 * 66}) &&
    bench::countInstructions({.name = "register, undo and redo one of 1000 actions",
                              .prepare = prepared<[](Scene& it) {
                                it.bag->manager->removeAllActions();
                                it.set(1000);
                                it.bag->manager->undo();
                                it.bag->manager->redo();
                                it.bag->manager->beginUndoGrouping();
                              }>,
                              .repetitions = 20,
                              .perform = 1000}) &&
    bench::countInstructions({.name = "post nobody hears", .prepare = prepared<[](Scene& it) {
                                                             NSNotificationCenter::defaultCenter().postIfHeard(
                                                                 NSUndoManagerWillCloseUndoGroupNotification,
                                                                 it.bag.get(), [] { return NSDictionary::make({}); });
                                                           }>}) &&
    bench::countInstructions({.name = "post to one listener of the object, with user information",
                              .prepare =
                                  [] {
                                    auto scene = std::make_shared<Scene>();
                                    const NSNotificationName name("BenchChanged");
                                    auto listener = std::make_shared<NotificationListener>(
                                        name, scene->bag.get(), [](const NSNotification&) {});
                                    const StringRef key = "changeInfo";
                                    return [scene, listener, name, key] {
                                      NSNotificationCenter::defaultCenter().postIfHeard(
                                          name, scene->bag.get(), [&] { return NSDictionary::make(key, scene->bag); });
                                    };
                                  }}) &&
    bench::countInstructions({.name = "nesting guard", .prepare = prepared<[](Scene&) {
                                                         const NestingGuard guard("bench");
                                                         benchmark::ClobberMemory();
                                                       }>});

}  // namespace
}  // namespace zt
