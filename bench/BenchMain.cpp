// SPDX-License-Identifier: MIT
#include <bench/BenchSupport.h>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define RUNNING_ON_VALGRIND 0
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_TOGGLE_COLLECT
#define CALLGRIND_DUMP_STATS_AT(name) (void)(name)
#endif

namespace zt::bench {
namespace {

std::vector<Comparison>& comparisons() {
  static std::vector<Comparison> all;
  return all;
}

std::vector<InstructionCount>& counts() {
  static std::vector<InstructionCount> all;
  return all;
}

std::vector<ByteCount>& byteCounts() {
  static std::vector<ByteCount> all;
  return all;
}

/// Prints as usual and keeps the medians.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  MedianReporter() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> medians;
    for (const Run& run : runs) {
      if (run.error_occurred || run.aggregate_name == "median") medians.push_back(run);
      if (run.aggregate_name == "median") {
        // In nanoseconds, whatever unit a benchmark prefers to print.
        mMedians[run.run_name.str()] = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
      }
    }
    ConsoleReporter::ReportRuns(medians);
  }

  const std::map<std::string, double>& medians() const { return mMedians; }

 private:
  std::map<std::string, double> mMedians;
};

int runTimes(int argc, char** argv) {
  // Defaults first: what the caller gives on the command line comes later and wins.
  std::vector<std::string> defaults = {argv[0], "--benchmark_repetitions=7", "--benchmark_min_time=0.05",
                                       "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments;
  for (std::string& text : defaults) arguments.push_back(text.data());
  for (int i = 1; i < argc; ++i) arguments.push_back(argv[i]);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  // What a run has freed stays with the process: else the kernel's fresh pages count, and against large cases only.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());

  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  bool titled = false;
  for (const Comparison& comparison : comparisons()) {
    const auto time = reporter.medians().find(comparison.name);
    const auto baseline = reporter.medians().find(comparison.baseline);
    if (time == reporter.medians().end() || baseline == reporter.medians().end()) continue;
    if (!std::exchange(titled, true)) std::printf("\nRatios of the medians above\n");
    const double ratio = time->second / baseline->second;
    std::printf("  %8.2f  %s / %s", ratio, comparison.name.c_str(), comparison.baseline.c_str());
    if (comparison.limit > 0) {
      std::printf("  (at most %g: %s)", comparison.limit, ratio <= comparison.limit ? "holds" : "MISSED");
    }
    std::printf("\n");
  }
  benchmark::Shutdown();
  return 0;
}

void count(const std::string& name, std::size_t repetitions, const std::function<void()>& operation) {
  for (int i = 0; i < 10; ++i) operation();
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  for (std::size_t i = 0; i < repetitions; ++i) operation();
  CALLGRIND_DUMP_STATS_AT(name.c_str());
  CALLGRIND_STOP_INSTRUMENTATION;
}

/// One line of ours for each count, and one dump of the tool for each count of instructions, in the same order:
/// bench/count-instructions joins them. Counts the named ones, or all if none is named.
int runCounts(const std::set<std::string>& names) {
  if (!RUNNING_ON_VALGRIND) {
    std::fprintf(stderr, "Instructions are counted by callgrind: ./dev bench --instructions\n");
    return 2;
  }
  const auto isWanted = [&](const std::string& name) { return names.empty() || names.count(name) != 0; };
  const std::size_t emptyRepetitions = 1000;
  std::printf("%zu\t1\t0\t(loop)\n", emptyRepetitions);
  count("(loop)", emptyRepetitions, [] {});
  for (const InstructionCount& each : counts()) {
    if (!isWanted(each.name)) continue;
    const std::function<void()> operation = each.prepare();
    std::printf("%zu\t%zu\t%g\t%s\n", each.repetitions, each.perform, each.limit, each.name.c_str());
    count(each.name, each.repetitions, operation);
  }
  for (const ByteCount& each : byteCounts()) {
    if (isWanted(each.name)) std::printf("bytes\t%g\t0\t%s\n", each.measure(), each.name.c_str());
  }
  return 0;
}

}  // namespace

bool compare(Comparison comparison) {
  comparisons().push_back(std::move(comparison));
  return true;
}

bool countInstructions(InstructionCount count) {
  counts().push_back(std::move(count));
  return true;
}

void uncounted(const std::function<void()>& work) {
  CALLGRIND_TOGGLE_COLLECT;
  work();
  CALLGRIND_TOGGLE_COLLECT;
}

bool countBytes(ByteCount count) {
  byteCounts().push_back(std::move(count));
  return true;
}

}  // namespace zt::bench

int main(int argc, char** argv) {
  const bool instructions = argc >= 2 && std::strcmp(argv[1], "--instructions") == 0;
  return instructions ? zt::bench::runCounts({argv + 2, argv + argc}) : zt::bench::runTimes(argc, argv);
}
