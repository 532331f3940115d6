// SPDX-License-Identifier: MIT

// Reading styles: effective values, flattened maps, chains of a million levels.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <ctime>
#include <optional>

namespace zt::bench {
namespace {

struct Chain {
  explicit Chain(std::size_t depth) : style(chain(*sheet, depth)) {}
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> style;
};

BENCHMARK(HashLookup);

void ValueAtDepth(benchmark::State& state) {
  const Chain made(static_cast<std::size_t>(state.range(0)));
  for (auto each : state) {
    Ref<NSObject> value = made.style->valueForProperty(keys()[0]);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(ValueAtDepth)->Arg(1)->Arg(3)->Arg(6)->Arg(20);

void MissAtDepth(benchmark::State& state) {
  const Chain made(static_cast<std::size_t>(state.range(0)));
  for (auto each : state) {
    Ref<NSObject> value = made.style->valueForProperty(keys()[159]);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(MissAtDepth)->Arg(6);

void Flatten150With50Own(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<PropertyMap> above = mapOf(0, 100);
  const Ref<PropertyMap> own = mapOf(100, 50);
  sheet->addStyle(make<PlainStyle>({.identifier = "above", .overridePropertyMap = above.get()}));
  const Ref<ZTSStyle> style = make<PlainStyle>({.parentIdentifier = "above", .overridePropertyMap = own.get()});
  sheet->addStyle(style);
  for (auto each : state) benchmark::DoNotOptimize(style->propertyMap());
  state.counters["per_entry"] =
      benchmark::Counter(150, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(Flatten150With50Own);

/// Nanoseconds of this thread's processor time.
double processorTime() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

void ChainOfAMillion(benchmark::State& state) {
  constexpr std::size_t kDepth = 1'000'000;
  double times[4] = {};
  const auto timed = [&](int step, auto work) {
    const double start = processorTime();
    work();
    times[step] = (processorTime() - start) / kDepth;
  };
  for (auto each : state) {
    std::optional<Chain> made;
    timed(0, [&] { made.emplace(kDepth); });
    timed(1, [&] { benchmark::DoNotOptimize(made->style->valueForProperty(keys()[0])); });
    timed(2, [&] { benchmark::DoNotOptimize(made->style->propertyMap()); });
    timed(3, [&] { made.reset(); });
  }
  const char* const names[] = {"build_ns", "lookup_ns", "flatten_ns", "release_ns"};
  for (int step = 0; step < 4; ++step) state.counters[names[step]] = times[step];
}
BENCHMARK(ChainOfAMillion)->Unit(benchmark::kMillisecond)->Iterations(1);

const bool kFlat1 = compare({"ValueAtDepth/1", "HashLookup"});
const bool kFlat6 = compare({"ValueAtDepth/6", "HashLookup"});
const bool kMiss6 = compare({"MissAtDepth/6", "HashLookup"});
const bool kDeep = compare({"ValueAtDepth/20", "ValueAtDepth/6"});

std::function<void()> lookup(std::size_t depth, std::size_t key) {
  return [made = std::make_shared<Chain>(depth), key = keys()[key]] {
    Ref<NSObject> value = made->style->valueForProperty(key);
    benchmark::DoNotOptimize(value);
  };
}
const bool kOwn = countInstructions({"valueForProperty:, own entry among 3", [] { return lookup(1, 2); }, 1000, 60});
const bool kThree =
    countInstructions({"valueForProperty:, 3 levels above", [] { return lookup(3, 0); }, 1000, 60 + 3 * 15});
const bool kSix =
    countInstructions({"valueForProperty:, 6 levels above", [] { return lookup(6, 0); }, 1000, 60 + 6 * 15});
const bool kTen =
    countInstructions({"valueForProperty:, 10 levels above", [] { return lookup(10, 0); }, 1000, 60 + 10 * 15});
const bool kTwenty =
    countInstructions({"valueForProperty:, 20 levels above", [] { return lookup(20, 0); }, 1000, 60 + 20 * 15});

}  // namespace
}  // namespace zt::bench
