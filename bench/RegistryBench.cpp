// SPDX-License-Identifier: MIT

// Adding and removing styles, orphans, re-parenting, memory.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <functional>
#include <memory>

namespace zt::bench {
namespace {

/// The floor: the two blocks of a style and its map, got and given back, in batches as large as those of styles. The
/// allocator keeps small blocks apart until a large one comes or goes, as the tables of stylesheets do, and then merges
/// them: so one does here, and both find the heap in the same state.
void TwoMallocs(benchmark::State& state) {
  constexpr std::size_t kBatch = 4096;
  constexpr std::size_t kLarge = 1 << 16;
  std::vector<void*> blocks(2 * kBatch);
  while (state.KeepRunningBatch(kBatch)) {
    for (std::size_t pair = 0; pair < kBatch; ++pair) {
      blocks[2 * pair] = ::operator new(104);
      blocks[2 * pair + 1] = ::operator new(72);
    }
    benchmark::ClobberMemory();
    for (void* block : blocks) ::operator delete(block);
    ::operator delete(::operator new(kLarge));
  }
}
BENCHMARK(TwoMallocs);

/// One anonymous style with three values under a base, made and added with undo; the batch is released untimed.
void CreateAndAddAnonymous(benchmark::State& state) {
  constexpr int kBatch = 4096;
  const Ref<PropertyMap> map = mapOf(4, 3);
  const StringRef base("base");
  Host host;
  while (state.KeepRunningBatch(kBatch)) {
    state.PauseTiming();
    Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&host);
    sheet->addStyle(make<PlainStyle>({.identifier = base}));
    host.undo->beginUndoGrouping();
    state.ResumeTiming();
    for (int style = 0; style < kBatch; ++style) {
      sheet->addStyle(make<PlainStyle>({.parentIdentifier = base, .overridePropertyMap = map.get()}));
    }
    state.PauseTiming();
    host.undo->endUndoGrouping();
    host.undo->removeAllActions();
    sheet.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(CreateAndAddAnonymous);

enum Order : std::int64_t { unrelated, childrenAfter, childrenBefore };

/// Families of nine; a parent's identifier is one string, as it is for whoever reads a file.
std::vector<Ref<ZTSStyle>> family(std::size_t count, Order order) {
  std::vector<Ref<ZTSStyle>> styles;
  styles.reserve(count);
  StringRef parent;
  for (std::size_t style = 0; style < count; ++style) {
    if (style % 9 == 0) parent = StringRef("parent" + std::to_string(style / 9));
    const bool isParent = order != unrelated && style % 9 == (order == childrenBefore ? 8 : 0);
    const bool isChild = order != unrelated && !isParent;
    styles.push_back(make<PlainStyle>({.identifier = isParent ? parent : StringRef("style" + std::to_string(style)),
                                       .parentIdentifier = isChild ? parent : StringRef()}));
  }
  return styles;
}

void AddIdentified(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const auto order = static_cast<Order>(state.range(1));
  for (auto each : state) {
    state.PauseTiming();
    auto styles = family(count, order);
    Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    for (std::int64_t orphan = 0; orphan < state.range(2); ++orphan) {
      sheet->addStyle(make<PlainStyle>(
          {.identifier = "orphan" + std::to_string(orphan), .parentIdentifier = "missing" + std::to_string(orphan)}));
    }
    state.ResumeTiming();
    for (const auto& style : styles) sheet->addStyle(style);
    state.PauseTiming();
    sheet.reset();
    styles.clear();
    state.ResumeTiming();
  }
}
BENCHMARK(AddIdentified)
    ->Unit(benchmark::kMillisecond)
    ->Args({10'000, unrelated, 0})
    ->Args({100'000, unrelated, 0})
    ->Args({100'000, unrelated, 1000})
    ->Args({10'000, childrenAfter, 0})
    ->Args({100'000, childrenAfter, 0})
    ->Args({10'000, childrenBefore, 0})
    ->Args({100'000, childrenBefore, 0});

void RemoveIdentified(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto each : state) {
    state.PauseTiming();
    auto styles = family(count, childrenAfter);
    const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    for (const auto& style : styles) sheet->addStyle(style);
    state.ResumeTiming();
    for (const auto& style : styles) sheet->removeStyle(style);
    state.PauseTiming();
    styles.clear();
    state.ResumeTiming();
  }
}
BENCHMARK(RemoveIdentified)->Unit(benchmark::kMillisecond)->Arg(10'000)->Arg(100'000);

/// A stylesheet whose styles all inherit from a style above it, and two stylesheets in turn that have one.
class Reparented {
 public:
  explicit Reparented(std::int64_t count) {
    for (const auto& above : mAbove) above->addStyle(make<PlainStyle>({.identifier = "base"}));
    mSheet->setParent(mAbove[0]);
    for (std::int64_t style = 0; style < count; ++style) {
      mSheet->addStyle(make<PlainStyle>({.identifier = "s" + std::to_string(style), .parentIdentifier = "base"}));
    }
  }
  void turn() { mSheet->setParent(mAbove[(mTurn = !mTurn) ? 1 : 0]); }

 private:
  const Ref<ZTSStylesheet> mAbove[2] = {ZTSStylesheet::withHost(), ZTSStylesheet::withHost()};
  const Ref<ZTSStylesheet> mSheet = ZTSStylesheet::withHost();
  bool mTurn = false;
};

void ReparentAbove(benchmark::State& state) {
  Reparented reparented(state.range(0));
  for (auto each : state) reparented.turn();
}
BENCHMARK(ReparentAbove)->Unit(benchmark::kMillisecond)->Arg(10'000)->Arg(100'000)->Arg(1'000'000);

void CreateStylesheet(benchmark::State& state) {
  for (auto each : state) {
    Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    const Ref<PropertyMap> map = mapOf(4, 3);
    sheet->addStyle(make<PlainStyle>({.identifier = "base"}));
    for (int style = 1; style < 100'000; ++style) {
      sheet->addStyle(make<PlainStyle>({.parentIdentifier = "base", .overridePropertyMap = map.get()}));
    }
    state.PauseTiming();
    sheet.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(CreateStylesheet)->Unit(benchmark::kMillisecond);

void DestroyStylesheet(benchmark::State& state) {
  for (auto each : state) {
    state.PauseTiming();
    Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
    const Ref<PropertyMap> map = mapOf(4, 3);
    sheet->addStyle(make<PlainStyle>({.identifier = "base"}));
    for (int style = 1; style < 100'000; ++style) {
      sheet->addStyle(make<PlainStyle>({.parentIdentifier = "base", .overridePropertyMap = map.get()}));
    }
    state.ResumeTiming();
    sheet.reset();
  }
}
BENCHMARK(DestroyStylesheet)->Unit(benchmark::kMillisecond);

/// Bytes of heap for an anonymous style with three shared values, held by the stylesheet and listed by its parent.
double bytesOfAnonymousStyle() {
  constexpr std::size_t kCount = 1 << 17;
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  sheet->addStyle(make<PlainStyle>({.identifier = "base"}));
  const Ref<PropertyMap> map = mapOf(4, 3);
  const StringRef base("base");
  const std::size_t before = heapInUse();
  for (std::size_t style = 0; style < kCount; ++style) {
    sheet->addStyle(make<PlainStyle>({.parentIdentifier = base, .overridePropertyMap = map.get()}));
  }
  return static_cast<double>(heapInUse() - before) / kCount;
}

void BytesOfAnonymousStyle(benchmark::State& state) {
  for (auto each : state) state.counters["bytes"] = bytesOfAnonymousStyle();
}
BENCHMARK(BytesOfAnonymousStyle)->Iterations(1);
const bool kBytes = countBytes({"bytes of an anonymous style of three values", bytesOfAnonymousStyle});

/// Both as above; the group of undo actions grows with the styles.
const bool kMallocCount = countInstructions({"two blocks got and given back", [] {
                                               return [] {
                                                 ::operator delete(::operator new(104));
                                                 ::operator delete(::operator new(72));
                                               };
                                             }});
const bool kAddCount = countInstructions(
    {"create and add an anonymous style, with undo", [] {
       static Host host;
       static const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&host);
       const Ref<PropertyMap> map = mapOf(4, 3);
       const StringRef base("base");
       sheet->addStyle(make<PlainStyle>({.identifier = base}));
       host.undo->beginUndoGrouping();
       return [map, base] {
         sheet->addStyle(make<PlainStyle>({.parentIdentifier = base, .overridePropertyMap = map.get()}));
       };
     }});

std::function<std::function<void()>()> reparenting(std::int64_t count) {
  return [count] { return [reparented = std::make_shared<Reparented>(count)] { reparented->turn(); }; };
}
const bool kReparentSmall = countInstructions({"re-parent, a style among 10,000", reparenting(10'000), 2, 0, 10'000});
const bool kReparentLarge =
    countInstructions({"re-parent, a style among 100,000", reparenting(100'000), 2, 0, 100'000});

const bool kAdd = compare({"CreateAndAddAnonymous", "TwoMallocs", 4});
const bool kLinear = compare({"AddIdentified/100000/0/0", "AddIdentified/10000/0/0", 15});
const bool kOrphans = compare({"AddIdentified/100000/0/1000", "AddIdentified/100000/0/0", 1.3});
const bool kAfter = compare({"AddIdentified/100000/1/0", "AddIdentified/10000/1/0", 15});
const bool kBefore = compare({"AddIdentified/100000/2/0", "AddIdentified/10000/2/0", 15});
const bool kRemove = compare({"RemoveIdentified/100000", "RemoveIdentified/10000", 15});
// All of 10,000 styles stand in a cache close to the core, of 100,000 they do not.
const bool kReparentNear = compare({"ReparentAbove/100000", "ReparentAbove/10000"});
const bool kReparent = compare({"ReparentAbove/1000000", "ReparentAbove/100000", 20});
const bool kDestroy = compare({"DestroyStylesheet", "CreateStylesheet", 2});

}  // namespace
}  // namespace zt::bench
