// SPDX-License-Identifier: MIT

// Validating, copying and comparing whole stylesheets: all are linear in the styles.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <support/ZTUAssertionHandler.h>

#include <stdexcept>

namespace zt::bench {
namespace {

/// Compares in a way of its own, as far as the library can know.
struct ComparingStyle : ZTSStyleOf<ComparingStyle, PlainStyle> {
  static constexpr const char* kClassName = "ComparingStyle";
  bool isEqual(const NSObject* other) const override { return PlainStyle::isEqual(other); }
};

/// Named styles with three values each, nine children to a parent; every tenth style is anonymous.
template <class T = PlainStyle>
Ref<ZTSStylesheet> manyStyles(std::int64_t count) {
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  for (std::int64_t style = 0; style < count; ++style) {
    const std::string number = std::to_string(style);
    const bool isAnonymous = style % 10 == 9;
    const Ref<PropertyMap> map = mapOf(static_cast<std::size_t>(style % 100), 3);
    sheet->addStyle(make<T>(
        {.name = isAnonymous ? StringRef() : StringRef("name " + number),
         .identifier = isAnonymous ? StringRef() : StringRef("style" + number),
         .parentIdentifier = style % 10 == 0 ? StringRef() : StringRef("style" + std::to_string(style / 10 * 10)),
         .overridePropertyMap = map.get()}));
  }
  return sheet;
}

/// A sound model tells nothing; a benchmark of reports would measure something else.
void requireSilence(const ZTUAssertionRecorder& reports) {
  if (!reports.reports().empty()) throw std::runtime_error(reports.reports().front().text());
}

template <class T>
void Validate(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = manyStyles<T>(state.range(0));
  ZTUAssertionRecorder reports;
  for (auto each : state) sheet->validate();
  requireSilence(reports);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Validate<PlainStyle>)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Validate<ComparingStyle>)->Arg(1'000)->Unit(benchmark::kMillisecond);

void Copy(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = manyStyles(state.range(0));
  for (auto each : state) benchmark::DoNotOptimize(sheet->copy());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Copy)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void Compare(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = manyStyles(state.range(0));
  const Ref<NSObject> copy = sheet->copy();
  for (auto each : state) {
    if (!sheet->isEqual(copy.get())) throw std::runtime_error("a copy that is not equal");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Compare)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// As above, with all styles in one chain.
void CompareChain(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  chain(*sheet, static_cast<std::size_t>(state.range(0)));
  const Ref<NSObject> copy = sheet->copy();
  for (auto each : state) {
    if (!sheet->isEqual(copy.get())) throw std::runtime_error("a copy that is not equal");
  }
}
BENCHMARK(CompareChain)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

// Ten times the styles no longer fit the caches, so the times grow a little faster than the instructions.
const bool kValidation = compare({"Validate<PlainStyle>/100000", "Validate<PlainStyle>/10000"});
const bool kCompareChain = compare({"CompareChain/10000", "CompareChain/1000", 25});
const bool kCopy = compare({"Copy/100000", "Copy/10000"});
const bool kComparison = compare({"Compare/100000", "Compare/10000"});

std::function<std::function<void()>()> validation(std::int64_t count) {
  return [count] { return [sheet = manyStyles(count)] { sheet->validate(); }; };
}
const bool kSmall = countInstructions({"validate, a style among 10,000", validation(10'000), 1, 2000, 10'000});
const bool kLarge = countInstructions({"validate, a style among 100,000", validation(100'000), 1, 2000, 100'000});

}  // namespace
}  // namespace zt::bench
