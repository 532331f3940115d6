// SPDX-License-Identifier: MIT

// Changing values: what it costs per inheriting style, with whom it is told, with undo; and equality.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <platform/NSNotificationCenter.h>
#include <ztstyles/ZTSStyleChangeInfo.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>

namespace {
std::size_t sAllocations = 0;
}
__attribute__((noinline)) void* operator new(std::size_t size) {
  ++sAllocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
__attribute__((noinline)) void operator delete(void* memory) noexcept { std::free(memory); }
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace zt::bench {
namespace {

/// Handles changes itself, by what it inherits.
struct OverridingStyle : ZTSStyleOf<OverridingStyle> {
  static constexpr const char* kClassName = "OverridingStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with(keys()); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override { ZTSStyle::stylePropertiesChanged(change); }
};

/// A root and so many styles that inherit from it, each with three own values; nothing is undoable but on request.
struct Family {
  template <class T>
  static std::shared_ptr<Family> of(std::int64_t children, bool undoable = false) {
    auto family = std::make_shared<Family>();
    family->sheet->addStyle(family->root);
    const Ref<PropertyMap> own = mapOf(1, 3);
    for (std::int64_t child = 0; child < children; ++child) {
      family->sheet->addStyle(make<T>({.parentIdentifier = "root", .overridePropertyMap = own.get()}));
    }
    if (undoable) family->sheet->setHost(&family->host);
    return family;
  }
  void change() { root->setValueForProperty(next(), keys()[0]); }
  const Ref<NSObject>& next() { return values[++turn & 1]; }
  ZTSStyle& child(std::size_t index) { return *sheet->anonymousStyles().allObjects()[index]; }

  Host host;
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> root = make<PlainStyle>({.identifier = "root"});
  Ref<NSObject> values[2] = {NSNumber::withInteger(1), NSNumber::withInteger(2)};
  std::size_t turn = 0;
};

BENCHMARK(HashLookup);

void run(benchmark::State& state, Family& family, const std::function<void()>& change) {
  const std::size_t before = sAllocations;
  for (auto each : state) change();
  const auto children = static_cast<double>(family.root->children().count());
  const double changes = static_cast<double>(state.iterations());
  state.counters["allocations_per_child"] = static_cast<double>(sAllocations - before) / changes / children;
  state.counters["per_child"] =
      benchmark::Counter(children, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Unheard(benchmark::State& state) {
  const auto family = Family::of<PlainStyle>(state.range(0));
  run(state, *family, [&] { family->change(); });
}
BENCHMARK(Unheard)->Arg(1'000)->Arg(100'000)->Arg(1'000'000);

void Overridden(benchmark::State& state) {
  const auto family = Family::of<OverridingStyle>(state.range(0));
  run(state, *family, [&] { family->change(); });
}
BENCHMARK(Overridden)->Arg(1'000)->Arg(100'000);

void OneChildListenedTo(benchmark::State& state) {
  const auto family = Family::of<PlainStyle>(state.range(0));
  const NotificationListener listener(ZTSStylePropertiesChangedNotification, &family->child(0),
                                      [](const NSNotification&) {});
  run(state, *family, [&] { family->change(); });
}
BENCHMARK(OneChildListenedTo)->Arg(1'000)->Arg(100'000);

void AllListenedTo(benchmark::State& state) {
  const auto family = Family::of<PlainStyle>(state.range(0));
  const NotificationListener listener(ZTSStylePropertiesChangedNotification, nullptr, [](const NSNotification&) {});
  run(state, *family, [&] { family->change(); });
}
BENCHMARK(AllListenedTo)->Arg(1'000)->Arg(100'000);

/// So many keys change, none of which the children set; each child has an observer, so that it matters.
void Filtered(benchmark::State& state) {
  struct : ZTSStyleObserver {
  } observer;
  const auto family = Family::of<OverridingStyle>(1'000);
  for (ZTSStyle* child : family->root->children().allObjects()) child->addObserver(&observer);
  const Ref<PropertyMap> values = mapOf(5, static_cast<std::size_t>(state.range(0)));
  const Ref<ZTSStyleChangeInfo> change =
      ZTSStyleChangeInfo::withStyleChangedProperties(family->root.get(), *values->keySet(), values.get());
  run(state, *family, [&] { family->root->stylePropertiesChanged(*change); });
  for (ZTSStyle* child : family->root->children().allObjects()) child->removeObserver(&observer);
}
BENCHMARK(Filtered)->Arg(1)->Arg(150);

void ChainOfPlainStyles(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> root = chain(*sheet, static_cast<std::size_t>(state.range(0)));
  const NotificationListener listener(ZTSStylePropertiesChangedNotification, root.get(), [](const NSNotification&) {});
  while (root->parent() != nullptr) root = root->parent();
  std::int64_t turn = 0;
  for (auto each : state) root->setValueForProperty(NSNumber::withInteger(++turn), keys()[0]);
  state.counters["per_level"] = benchmark::Counter(
      static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(ChainOfPlainStyles)->Arg(1'000)->Arg(1'000'000);

void BareStore(benchmark::State& state) {
  const auto family = Family::of<PlainStyle>(1);
  for (auto each : state) family->child(0).p_setValueForProperty(family->next(), keys()[1]);
}
BENCHMARK(BareStore);

/// A million changes in one group, taken back and done again.
void UndoAndRedo(benchmark::State& state) {
  const auto family = Family::of<PlainStyle>(1, true);
  ZTSStyle& style = family->child(0);
  NSUndoManager& undo = *family->host.undo;
  const std::size_t before = heapInUse();
  undo.performInGroup([&] {
    for (std::int64_t action = 0; action < state.range(0); ++action)
      style.setValueForProperty(family->next(), keys()[1]);
  });
  state.counters["bytes_per_action"] = static_cast<double>(heapInUse() - before) / static_cast<double>(state.range(0));
  for (auto each : state) {
    undo.undo();
    undo.redo();
  }
  undo.removeAllActions();
}
BENCHMARK(UndoAndRedo)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// Two towers of layers of two styles that both refer to both styles of the next layer.
void EqualLayers(benchmark::State& state) {
  Ref<ZTSStyle> tops[2];
  for (Ref<ZTSStyle>& top : tops) {
    Ref<ZTSStyle> left = make<PlainStyle>(), right = make<PlainStyle>({.name = "right"});
    for (std::int64_t layer = 0; layer < state.range(0); ++layer) {
      const Ref<PropertyMap> both = PropertyMap::with({{keys()[0], left}, {keys()[1], right}});
      left = make<PlainStyle>({.overridePropertyMap = both.get()});
      right = make<PlainStyle>({.name = "right", .overridePropertyMap = both.get()});
    }
    top = left;
  }
  for (auto each : state) benchmark::DoNotOptimize(tops[0]->isEqual(tops[1].get()));
}
BENCHMARK(EqualLayers)->Arg(20)->Arg(200);

const bool kCompared = compare({.name = "Unheard/1000", .baseline = "HashLookup", .limit = 5 * 1'000}) &&
                       compare({.name = "Unheard/100000", .baseline = "HashLookup", .limit = 5 * 100'000}) &&
                       compare({.name = "Unheard/1000000", .baseline = "Unheard/1000"}) &&
                       compare({.name = "OneChildListenedTo/100000", .baseline = "Unheard/100000"}) &&
                       compare({.name = "Overridden/100000", .baseline = "Unheard/100000"}) &&
                       compare({.name = "AllListenedTo/100000", .baseline = "Unheard/100000"}) &&
                       compare({.name = "Filtered/150", .baseline = "Filtered/1", .limit = 2}) &&
                       compare({.name = "ChainOfPlainStyles/1000000", .baseline = "ChainOfPlainStyles/1000"}) &&
                       compare({.name = "UndoAndRedo/1000000", .baseline = "UndoAndRedo/100000", .limit = 15}) &&
                       compare({.name = "EqualLayers/200", .baseline = "EqualLayers/20", .limit = 15});

template <class T>
std::function<std::function<void()>()> changesOf(std::int64_t children) {
  return [children] {
    auto family = Family::of<T>(children);
    return [family] { family->change(); };
  };
}

std::function<void()> changesListenedTo() {
  auto family = Family::of<PlainStyle>(1'000);
  auto listener = std::make_shared<NotificationListener>(ZTSStylePropertiesChangedNotification, nullptr,
                                                         [](const NSNotification&) {});
  return [family, listener] { family->change(); };
}

std::function<void()> changesObserved() {
  struct Observed {
    struct : ZTSStyleObserver {
    } observer;
    std::shared_ptr<Family> family = Family::of<PlainStyle>(1'000);
    Observed() {
      for (ZTSStyle* child : family->root->children().allObjects()) child->addObserver(&observer);
    }
    ~Observed() {
      for (ZTSStyle* child : family->root->children().allObjects()) child->removeObserver(&observer);
    }
  };
  return [observed = std::make_shared<Observed>()] { observed->family->change(); };
}

/// A thousand changes of one style in one group.
struct Undoable {
  std::shared_ptr<Family> family = Family::of<PlainStyle>(1, true);
  NSUndoManager& manager = *family->host.undo;
  Undoable() {
    manager.performInGroup([&] {
      for (int action = 0; action < 1'000; ++action)
        family->child(0).setValueForProperty(family->next(), keys()[1 + action % 3]);
    });
  }
  ~Undoable() { manager.removeAllActions(); }
};

std::function<void()> undoing() {
  return [it = std::make_shared<Undoable>()] {
    it->manager.undo();
    uncounted([&] { it->manager.redo(); });
  };
}

std::function<void()> redoing() {
  return [it = std::make_shared<Undoable>()] {
    uncounted([&] { it->manager.undo(); });
    it->manager.redo();
  };
}

std::function<void()> inheritedPart() {
  auto family = Family::of<OverridingStyle>(1);
  const Ref<ZTSStyle> child(&family->child(0));
  const Ref<ZTSStyleChangeInfo> change =
      ZTSStyleChangeInfo::withStyleChangedProperty(family->root.get(), keys()[0], family->next());
  return [family, child, change] { child->ZTSStyle::stylePropertiesChanged(*change); };
}

template <void (*Operation)(Family&, ZTSStyle&)>
std::function<void()> onOne() {
  auto family = Family::of<PlainStyle>(1, true);
  family->host.undo->beginUndoGrouping();
  const Ref<ZTSStyle> style(&family->child(0));
  return [family, style] { Operation(*family, *style); };
}

std::function<void()> equality() {
  const Ref<PropertyMap> own = mapOf(0, 3);
  const Ref<ZTSStyle> one = make<PlainStyle>({.overridePropertyMap = own.get()});
  const Ref<NSObject> two = one->copy();
  return [one, two] { benchmark::DoNotOptimize(one->isEqual(two.get())); };
}

const bool kCounted =
    countInstructions({.name = "change, a child that nobody can see change",
                       .prepare = changesOf<PlainStyle>(1'000),
                       .repetitions = 100,
                       .limit = 60,
                       .perform = 1'000}) &&
    countInstructions({.name = "change, a child whose class overrides the handling",
                       .prepare = changesOf<OverridingStyle>(1'000),
                       .repetitions = 100,
                       .perform = 1'000}) &&
    countInstructions({.name = "the inherited part of such a handling", .prepare = inheritedPart, .limit = 200}) &&
    countInstructions({.name = "change, a child that a listener hears",
                       .prepare = changesListenedTo,
                       .repetitions = 100,
                       .limit = 700,
                       .perform = 1'000}) &&
    countInstructions({.name = "change, a child with an observer",
                       .prepare = changesObserved,
                       .repetitions = 100,
                       .perform = 1'000}) &&
    countInstructions({.name = "change told to one child", .prepare = changesOf<OverridingStyle>(1)}) &&
    countInstructions(
        {.name = "bare store of a value",
         .prepare = onOne<[](Family& it, ZTSStyle& style) { style.p_setValueForProperty(it.next(), keys()[1]); }>}) &&
    countInstructions(
        {.name = "setValue:forProperty: with its inverse",
         .prepare = onOne<[](Family& it, ZTSStyle& style) { style.setValueForProperty(it.next(), keys()[1]); }>}) &&
    countInstructions(
        {.name = "undo of setValue:forProperty:", .prepare = undoing, .repetitions = 5, .perform = 1'000}) &&
    countInstructions(
        {.name = "redo of setValue:forProperty:", .prepare = redoing, .repetitions = 5, .perform = 1'000}) &&
    countInstructions({.name = "equality of two styles of three values", .prepare = equality});

}  // namespace
}  // namespace zt::bench
