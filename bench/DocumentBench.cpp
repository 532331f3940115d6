// SPDX-License-Identifier: MIT

// The application at work: reading OpenDocument files, beside what libxml2 takes to parse the same bytes, and
// replaying a document's formatting. One family of many siblings, one long chain, one real document.

#include "BenchSupport.h"

#include <insight/reuse/Deduplication.h>
#include <opendocument/OpenDocumentFormat.h>
#include <opendocument/reading/StyleImporter.h>
#include <opendocument/writing/EditableOpenDocument.h>

#include <libxml/parser.h>

#include <map>

namespace zt::bench {
namespace {

const std::string kReal = std::string(ZT_TEST_DATA_DIR) + "/odf/09-large-api-reference";

/// A flat document of so many styles: all under one parent, or each under the one before.
const std::string& flatOf(std::int64_t count, bool deep) {
  static auto* all = new std::map<std::pair<std::int64_t, bool>, std::string>;
  std::string& text = (*all)[{count, deep}];
  if (!text.empty()) return text;
  text =
      "<office:document xmlns:office='urn:oasis:names:tc:opendocument:xmlns:office:1.0' "
      "xmlns:style='urn:oasis:names:tc:opendocument:xmlns:style:1.0' "
      "xmlns:fo='urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0'><office:styles>\n"
      "<style:style style:family='text' style:name='S0'/>\n";
  for (std::int64_t index = 1; index < count; ++index) {
    text += "<style:style style:family='text' style:name='S" + std::to_string(index) + "' style:parent-style-name='S" +
            std::to_string(deep ? index - 1 : 0) + "'><style:text-properties fo:font-size='" +
            std::to_string(6 + index % 60) + "pt'/></style:style>\n";
  }
  text += "</office:styles></office:document>";
  return text;
}

void Read(benchmark::State& state) {
  const std::string& text = flatOf(state.range(0), state.range(1) != 0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(importStyles(RawDocument::read(Package::fromFlatText(text, "bench.fodt"))));
  }
}
BENCHMARK(Read)
    ->ArgNames({"", "deep"})
    ->Args({20'000, 0})
    ->Args({200'000, 0})
    ->Args({2'000, 1})
    ->Args({20'000, 1})
    ->Unit(benchmark::kMillisecond);

/// What comes after reading: one changed style, written back and checked.
void WriteBack(benchmark::State& state) {
  const std::string& text = flatOf(state.range(0), false);
  for (auto _ : state) {
    state.PauseTiming();
    auto document = EditableOpenDocument::fromFlatText(text, "bench.fodt");
    OdfStyle& style = document->editor().style("S1");
    document->editor().set(style, {document->editor().assignment(style, "text.fo.font-size=99pt")});
    state.ResumeTiming();
    benchmark::DoNotOptimize(document->writtenParts());
    state.PauseTiming();
    document.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(WriteBack)->Arg(20'000)->Arg(200'000)->Unit(benchmark::kMillisecond);

void BareParse(benchmark::State& state) {
  const std::string& text = flatOf(state.range(0), false);
  for (auto _ : state) {
    xmlFreeDoc(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET));
  }
}
BENCHMARK(BareParse)->Arg(20'000)->Unit(benchmark::kMillisecond);

void ReadReal(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(openDocumentFormat().read(kReal));
}
BENCHMARK(ReadReal)->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool kSiblings = compare({"Read/200000/deep:0", "Read/20000/deep:0", 20});
[[maybe_unused]] const bool kWritten = compare({"WriteBack/200000", "Read/200000/deep:0", 2});
[[maybe_unused]] const bool kChain = compare({"Read/20000/deep:1", "Read/2000/deep:1", 15});
[[maybe_unused]] const bool kParse = compare({"Read/20000/deep:0", "BareParse/20000"});

}  // namespace
}  // namespace zt::bench
