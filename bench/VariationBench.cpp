// SPDX-License-Identifier: MIT

// Finding an existing style or making one, and removing the unused.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <random>

namespace {
std::size_t sAllocations = 0;
}
// Not inlined, or the compiler takes malloc and delete for a pair that does not match.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++sAllocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace zt::bench {
namespace {

/// Refers to a style with its last key.
struct AggregateStyle : ZTSStyleOf<AggregateStyle, ZTSAggregateStyle> {
  static constexpr const char* kClassName = "AggregateStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with(keys()); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> all{keys()[159]};
    return all;
  }
};

enum Values : std::int64_t { atRandom, dense };

/// The values of the style with this number: three out of a thousand at random, or a dense grid.
class Wanted {
 public:
  explicit Wanted(Values kind) : mKind(kind) {
    std::mt19937_64 random(11);
    for (int value = 0; value < 1024; ++value) {
      mValues.push_back(NSNumber::withInteger(kind == dense ? value : static_cast<std::int64_t>(random() >> 20)));
    }
  }
  const PropertyMap& operator()(std::size_t number) {
    std::size_t place = number;
    const std::size_t step = mKind == dense ? 100 : 1024;
    if (mKind == atRandom) place = number * 0x9e3779b97f4a7c15ull >> 34;  // one to one below 2^30
    for (std::size_t key = 0; key < 3; ++key, place /= step) mMap->set(keys()[key], mValues[place % step]);
    return *mMap;
  }

 private:
  const Values mKind;
  std::vector<Ref<NSObject>> mValues;
  Ref<PropertyMap> mMap = PropertyMap::make(3);
};

struct Family {
  explicit Family(std::size_t count, Values kind = atRandom) : wanted(kind) {
    sheet->addStyle(base);
    for (std::size_t number = 0; number < count; ++number)
      sheet->variationOfStyle(base.get(), {.propertyMap = &wanted(number)});
  }
  ZTSStyle* find(std::size_t number) {
    return sheet->variationOfStyle(base.get(), {.propertyMap = &wanted(number)}).get();
  }
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> base = make<PlainStyle>({.identifier = "base"});
  Wanted wanted;
};

/// The families that several benchmarks read; each is made once.
Family& familyOf(std::size_t count) {
  static std::map<std::size_t, std::unique_ptr<Family>> all;
  std::unique_ptr<Family>& family = all[count];
  if (!family) family = std::make_unique<Family>(count);
  return *family;
}

constexpr std::size_t kRepeated = 64;

void FindRepeated(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Family& family = familyOf(count);
  std::vector<Ref<PropertyMap>> maps;
  for (std::size_t each = 0; each < kRepeated; ++each) maps.push_back(family.wanted(each * (count / kRepeated)).copy());
  std::size_t at = 0;
  const std::size_t before = sAllocations;
  for (auto each : state) {
    benchmark::DoNotOptimize(
        family.sheet->variationOfStyle(family.base.get(), {.propertyMap = maps[at++ % kRepeated].get()}));
  }
  state.counters["allocations"] = static_cast<double>(sAllocations - before);
}
BENCHMARK(FindRepeated)->Arg(1000)->Arg(100'000)->Arg(1'000'000);
const bool kRepeated100k = compare({"FindRepeated/100000", "FindRepeated/1000", 1.5});
const bool kRepeated1M = compare({"FindRepeated/1000000", "FindRepeated/1000", 1.5});

void FindAtRandom(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Family& family = familyOf(count);
  std::minstd_rand random(3);
  for (auto each : state) benchmark::DoNotOptimize(family.find(random() % count));
}
BENCHMARK(FindAtRandom)->Arg(1000)->Arg(100'000)->Arg(1'000'000);
const bool kRandom1M = compare({"FindAtRandom/1000000", "FindAtRandom/1000", 15});

/// What the index takes the place of.
void FindByWalking(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Family& family = familyOf(count);
  std::minstd_rand random(3);
  for (auto each : state) {
    const PropertyMap& wanted = family.wanted(random() % count);
    for (const ZTSStyle* child : family.base->children()) {
      if (child->stylesheet() == family.sheet && !child->isLocked() && child->isAnonymous() &&
          child->overridePropertyMap()->isEqual(wanted)) {
        benchmark::DoNotOptimize(child);
        break;
      }
    }
  }
}
BENCHMARK(FindByWalking)->Arg(1000)->Arg(100'000);
const bool kWalk1k = compare({"FindByWalking/1000", "FindAtRandom/1000"});
const bool kWalk100k = compare({"FindByWalking/100000", "FindAtRandom/100000"});

void FindOrMakeDistinct(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto each : state) {
    state.PauseTiming();
    const std::size_t before = heapInUse();
    state.ResumeTiming();
    auto family = std::make_unique<Family>(count, static_cast<Values>(state.range(1)));
    state.PauseTiming();
    state.counters["bytes_each"] = static_cast<double>(heapInUse() - before) / static_cast<double>(count);
    state.counters["made"] = static_cast<double>(family->sheet->anonymousStyles().count());
    family.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(FindOrMakeDistinct)
    ->Args({10'000, atRandom})
    ->Args({10'000, dense})
    ->Args({100'000, atRandom})
    ->Args({100'000, dense})
    ->Args({1'000'000, atRandom})
    ->Args({1'000'000, dense})
    ->Unit(benchmark::kMillisecond);
const bool kDistinct = compare({"FindOrMakeDistinct/1000000/0", "FindOrMakeDistinct/100000/0", 20});
const bool kDistinctDense = compare({"FindOrMakeDistinct/1000000/1", "FindOrMakeDistinct/100000/1", 20});
const bool kDense10k = compare({"FindOrMakeDistinct/10000/1", "FindOrMakeDistinct/10000/0", 2});
const bool kDense100k = compare({"FindOrMakeDistinct/100000/1", "FindOrMakeDistinct/100000/0", 2});
const bool kDense1M = compare({"FindOrMakeDistinct/1000000/1", "FindOrMakeDistinct/1000000/0", 2});

// ---- A million formatting requests drawn from five hundred

constexpr std::size_t kKinds = 500;

struct Requests {
  Requests() {
    std::minstd_rand random(5);
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
      maps.push_back(family.wanted(kind * 7919).copy());
      styles.push_back(family.sheet->variationOfStyle(family.base.get(), {.propertyMap = maps.back().get()}));
    }
    for (std::size_t each = 0; each < 1'000'000; ++each) drawn.push_back(static_cast<std::uint16_t>(random() % kKinds));
  }
  Family family{0};
  std::vector<Ref<PropertyMap>> maps;
  std::vector<Ref<ZTSStyle>> styles;
  std::vector<std::uint16_t> drawn;
};

void RequestsFrom500(benchmark::State& state) {
  static Requests requests;
  std::size_t at = 0;
  const std::size_t before = sAllocations;
  for (auto each : state) {
    const PropertyMap* map = requests.maps[requests.drawn[at++ % requests.drawn.size()]].get();
    benchmark::DoNotOptimize(requests.family.sheet->variationOfStyle(requests.family.base.get(), {.propertyMap = map}));
  }
  state.counters["allocations"] = static_cast<double>(sAllocations - before);
}
BENCHMARK(RequestsFrom500);

/// The yardstick: a hash table from a request to its style, with the hashes of the requests known beforehand, and one
/// comparison of maps.
void CachedLookupFrom500(benchmark::State& state) {
  static Requests requests;
  boost::unordered_flat_map<std::size_t, Ref<ZTSStyle>> table;
  std::vector<std::size_t> hashes;
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    hashes.push_back(requests.maps[kind]->hash());
    table.emplace(hashes[kind], requests.styles[kind]);
  }
  std::size_t at = 0;
  for (auto each : state) {
    const std::size_t kind = requests.drawn[at++ % requests.drawn.size()];
    Ref<ZTSStyle> style = table.find(hashes[kind])->second;
    if (!style->overridePropertyMap()->isEqual(*requests.maps[kind])) style.reset();
    benchmark::DoNotOptimize(style);
  }
}
BENCHMARK(CachedLookupFrom500);
const bool kCached = compare({"RequestsFrom500", "CachedLookupFrom500", 12});

// ---- Aggregates that differ in the style they refer to alone

struct Aggregates {
  explicit Aggregates(std::size_t count) {
    sheet->addStyle(base);
    for (std::size_t number = 0; number < count; ++number) {
      const Ref<PropertyMap> values = mapOf(0, 1);
      values->set(keys()[1], NSNumber::withInteger(static_cast<std::int64_t>(number)));
      referenced.push_back(make<PlainStyle>({.overridePropertyMap = values.get()}));
      sheet->addStyle(referenced.back());
      find(number);
    }
  }
  Ref<ZTSStyle> find(std::size_t number) {
    map->set(keys()[159], referenced[number]);
    return sheet->variationOfStyle(base.get(), {.propertyMap = map.get()});
  }
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> base = make<AggregateStyle>({.identifier = "base"});
  std::vector<Ref<ZTSStyle>> referenced;
  Ref<PropertyMap> map = mapOf(2, 2);
};

void FindAggregate(benchmark::State& state) {
  static std::map<std::int64_t, std::unique_ptr<Aggregates>> all;
  std::unique_ptr<Aggregates>& aggregates = all[state.range(0)];
  if (!aggregates) aggregates = std::make_unique<Aggregates>(static_cast<std::size_t>(state.range(0)));
  std::size_t at = 0;
  for (auto each : state) {
    benchmark::DoNotOptimize(aggregates->find(at++ % kRepeated * static_cast<std::size_t>(state.range(0)) / kRepeated));
  }
}
BENCHMARK(FindAggregate)->Arg(1000)->Arg(100'000);
const bool kAggregates = compare({"FindAggregate/100000", "FindAggregate/1000", 1.5});

// ---- Cleanup

struct Document {
  Document(std::size_t used, std::size_t unused) {
    host.undo->disableUndoRegistration();
    sheet->addStyle(make<PlainStyle>({.identifier = "base"}));
    const Ref<PropertyMap> map = mapOf(0, 3);
    for (std::size_t each = 0; each < used + unused; ++each) {
      const Ref<ZTSStyle> style = make<PlainStyle>({.parentIdentifier = "base", .overridePropertyMap = map.get()});
      sheet->addStyle(style);
      if (each * unused / (used + unused) == (each + 1) * unused / (used + unused)) style->incrementUsageCount();
    }
    host.undo->enableUndoRegistration();
    sheet->enableUnusedStyleCleanup();
  }
  Host host;
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&host);
};

/// Twenty styles are made and left unused in one user action, whose end is timed.
void CloseGroupWith20Unused(benchmark::State& state) {
  static std::map<std::int64_t, std::unique_ptr<Document>> all;
  std::unique_ptr<Document>& document = all[state.range(0)];
  if (!document) document = std::make_unique<Document>(static_cast<std::size_t>(state.range(0)), 0);
  const Ref<PropertyMap> map = mapOf(10, 3);
  std::vector<Ref<ZTSStyle>> unused;
  for (auto each : state) {
    state.PauseTiming();
    document->host.undo->beginUndoGrouping();
    for (int style = 0; style < 20; ++style) {
      unused.push_back(make<PlainStyle>({.parentIdentifier = "base", .overridePropertyMap = map.get()}));
      document->sheet->addStyle(unused.back());
    }
    state.ResumeTiming();
    document->host.undo->endUndoGrouping();
    state.PauseTiming();
    document->host.undo->removeAllActions();
    unused.clear();
    state.ResumeTiming();
  }
}
BENCHMARK(CloseGroupWith20Unused)->Arg(1000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
const bool kClose = compare({"CloseGroupWith20Unused/1000000", "CloseGroupWith20Unused/1000", 5});

void RemoveHalf(benchmark::State& state) {
  const auto half = static_cast<std::size_t>(state.range(0)) / 2;
  for (auto each : state) {
    state.PauseTiming();
    auto document = std::make_unique<Document>(half, half);
    state.ResumeTiming();
    document->host.undo->performInGroup([] {});
    state.PauseTiming();
    state.counters["left"] = static_cast<double>(document->sheet->anonymousStyles().count());
    document->host.undo->removeAllActions();
    document.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(RemoveHalf)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
const bool kHalf = compare({"RemoveHalf/1000000", "RemoveHalf/100000", 20});

// ---- Instructions

InstructionCount findAmong(std::size_t count, double limit) {
  return {.name = "find among " + std::to_string(count),
          .prepare = [count]() -> std::function<void()> {
            auto family = std::make_shared<Family>(count);
            auto maps = std::make_shared<std::vector<Ref<PropertyMap>>>();
            for (std::size_t each = 0; each < 1000; ++each)
              maps->push_back(family->wanted(each * (count / 1000)).copy());
            auto at = std::make_shared<std::size_t>(0);
            return [=] {
              family->sheet->variationOfStyle(family->base.get(), {.propertyMap = (*maps)[(*at)++ % 1000].get()});
            };
          },
          .repetitions = 1000,
          .limit = limit};
}
const bool kCount1k = countInstructions(findAmong(1000, 0));
const bool kCount100k = countInstructions(findAmong(100'000, 0));
const bool kCount1M = countInstructions(findAmong(1'000'000, 0));

/// One of five hundred kinds of values, with a map that is there already.
std::function<void()> findKindAtHand() {
  auto requests = std::make_shared<Requests>();
  return [requests, at = std::size_t{0}]() mutable {
    requests->family.sheet->variationOfStyle(requests->family.base.get(),
                                             {.propertyMap = requests->maps[at++ % kKinds].get()});
  };
}

/// The same as a user interface asks: numbers and map are made for the request.
std::function<void()> findKindBuilt() {
  auto family = std::make_shared<Family>(0, dense);
  const auto request = [family](std::int64_t kind) {
    const Ref<PropertyMap> map = PropertyMap::make(3);
    map->set(keys()[0], NSNumber::withInteger(kind % 100));
    map->set(keys()[1], NSNumber::withInteger(kind / 100));
    map->set(keys()[2], NSNumber::withInteger(400));
    family->sheet->variationOfStyle(family->base.get(), {.propertyMap = map.get()});
  };
  constexpr auto kAll = static_cast<std::int64_t>(kKinds);
  for (std::int64_t kind = 0; kind < kAll; ++kind) request(kind);
  return [request, at = std::int64_t{0}]() mutable { request(at++ % kAll); };
}

template <Values kind>
std::function<void()> makeDistinct() {
  auto family = std::make_shared<Family>(10'000, kind);
  return [family, next = std::size_t{10'000}]() mutable { family->find(next++); };
}

template <Values kind>
std::function<void()> askAgain() {
  auto family = std::make_shared<Family>(10'000, kind);
  return [family, random = std::minstd_rand(3)]() mutable { family->find(random() % 10'000); };
}

const bool kKindsCounted =
    countInstructions({.name = "find one of 500 kinds, map at hand", .prepare = findKindAtHand}) &&
    countInstructions({.name = "find one of 500 kinds, map made for it", .prepare = findKindBuilt}) &&
    countInstructions({.name = "make a distinct variation, random values", .prepare = makeDistinct<atRandom>}) &&
    countInstructions({.name = "make a distinct variation, dense values", .prepare = makeDistinct<dense>}) &&
    countInstructions({.name = "ask again for one of 10,000, random values", .prepare = askAgain<atRandom>}) &&
    countInstructions({.name = "ask again for one of 10,000, dense values", .prepare = askAgain<dense>});

const bool kBytes =
    countBytes({"bytes of a variation of three values made for it", [] {
                  constexpr std::int64_t kCount = 1 << 16;
                  const Family family(0);
                  const std::size_t before = heapInUse();
                  for (std::int64_t number = 0; number < kCount; ++number) {
                    const Ref<PropertyMap> map = PropertyMap::make(3);
                    for (std::size_t key = 0; key < 3; ++key) {
                      map->set(keys()[key], NSNumber::withInteger((number << 20) + static_cast<std::int64_t>(key)));
                    }
                    family.sheet->variationOfStyle(family.base.get(), {.propertyMap = map.get()});
                  }
                  return static_cast<double>(heapInUse() - before) / kCount;
                }});

}  // namespace
}  // namespace zt::bench
