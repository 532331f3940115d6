// SPDX-License-Identifier: MIT

// Chains and rings of references: counting along them, and freeing them.

#include "BenchStyles.h"
#include "BenchSupport.h"

namespace zt::bench {
namespace {

inline PropertyKey reference() { return keys()[0]; }

/// An aggregate with one referenced-style property.
struct Link : ZTSStyleOf<Link, ZTSAggregateStyle> {
  static constexpr const char* kClassName = "Link";
  static Ref<const PropertySet> classKeys() { return PropertySet::with(keys()); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> all{reference()};
    return all;
  }
};

enum Shape : std::int64_t { unlinked, chained, ringed };

struct Links {
  Links(std::size_t count, Shape shape) {
    const Ref<PropertyMap> map = PropertyMap::make(1);
    for (std::size_t i = 0; i < count; ++i) {
      map->set(reference(), last && shape != unlinked ? Ref<NSObject>(last) : Ref<NSObject>(NSNull::null()));
      last = make<Link>({.overridePropertyMap = map.get()});
      if (!first) first = last;
      sheet->addStyle(last);
    }
    if (shape == ringed) first->setValueForProperty(last, reference());
  }
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> first;
  Ref<ZTSStyle> last;
};

/// A use of the far end, counted through every style of the chain, and its end.
void CountAlongChain(benchmark::State& state) {
  const Links links(static_cast<std::size_t>(state.range(0)), chained);
  for (auto _ : state) {
    links.last->incrementUsageCount();
    links.last->decrementUsageCount();
  }
  state.counters["perStyle"] =
      benchmark::Counter(static_cast<double>(2 * state.range(0)),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(CountAlongChain)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

/// The end of a stylesheet whose styles hold nothing, one another in a chain, or one another in a ring.
void FreeStylesheet(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Links links(static_cast<std::size_t>(state.range(0)), static_cast<Shape>(state.range(1)));
    links.first.reset();
    links.last.reset();
    state.ResumeTiming();
    links.sheet.reset();
  }
}
BENCHMARK(FreeStylesheet)->ArgsProduct({{10'000, 100'000}, {unlinked, chained, ringed}})->Unit(benchmark::kMillisecond);

const bool kCounting = compare({"CountAlongChain/100000", "CountAlongChain/10000", 25});
const bool kLinear = compare({"FreeStylesheet/100000/2", "FreeStylesheet/10000/2", 25});
const bool kRing = compare({"FreeStylesheet/100000/2", "FreeStylesheet/100000/0"});

const bool kOneStep =
    countInstructions({.name = "a use of an aggregate in use", .prepare = [] {
                         return [links = std::make_shared<Links>(2, chained)] { links->last->incrementUsageCount(); };
                       }});
const bool kTwoSteps = countInstructions({.name = "first use and end of use, one reference", .prepare = [] {
                                            return [links = std::make_shared<Links>(2, chained)] {
                                              links->last->incrementUsageCount();
                                              links->last->decrementUsageCount();
                                            };
                                          }});

}  // namespace
}  // namespace zt::bench
