// SPDX-License-Identifier: MIT

// Reading WordprocessingML beside what libxml2 takes to parse the same parts, in instructions, and the ratio of the
// two; and writing back one changed style. The documents: a real report, and one of many styles and formatted runs.

#include "BenchSupport.h"

#include <wordprocessing/writing/EditableWordDocument.h>

#include <libxml/parser.h>

#include <memory>

namespace zt::bench {
namespace {

const std::string kReal = std::string(ZT_TEST_DATA_DIR) + "/docx/10-large-report.docx";

std::vector<WordPackage::Part> realParts() { return WordPackage::read(kReal).parts; }

std::vector<WordPackage::Part> madeParts(int styles, int runs) {
  const std::string root = " xmlns:w='http://schemas.openxmlformats.org/wordprocessingml/2006/main'>";
  std::string sheet = "<w:styles" + root;
  for (int index = 0; index < styles; ++index) {
    const std::string number = std::to_string(index);
    sheet += "<w:style w:type='paragraph' w:styleId='S" + number + "'><w:name w:val='style " + number +
             "'/><w:basedOn w:val='S0'/><w:qFormat/><w:pPr><w:keepNext/><w:spacing w:before='" + number +
             "'/></w:pPr><w:rPr><w:b/><w:sz w:val='" + std::to_string(12 + index % 60) + "'/></w:rPr></w:style>\n";
  }
  std::string text = "<w:document" + root + "<w:body>";
  for (int index = 0; index < runs; ++index) {
    const std::string number = std::to_string(index % styles);
    text += "<w:p><w:pPr><w:pStyle w:val='S" + number +
            "'/><w:jc w:val='both'/></w:pPr><w:r><w:rPr><w:i/></w:rPr><w:t>" +
            "Some words of text, as a run has them</w:t></w:r><w:r><w:t>and some more.</w:t></w:r></w:p>\n";
  }
  return {{WordPartKind::styles, {"word/styles.xml", "styles.xml", sheet + "</w:styles>"}},
          {WordPartKind::document, {"word/document.xml", "document.xml", text + "</w:body></w:document>"}}};
}

std::size_t bytesOf(const std::vector<WordPackage::Part>& parts) {
  std::size_t bytes = 0;
  for (const WordPackage::Part& part : parts) bytes += part.xml.bytes.size();
  return bytes;
}

void readAll(const std::vector<WordPackage::Part>& parts) {
  WordPackage package;
  package.parts = parts;
  benchmark::DoNotOptimize(importWord(WordDocument::read(std::move(package))));
}

void parseAll(const std::vector<WordPackage::Part>& parts) {
  for (const WordPackage::Part& part : parts) {
    xmlFreeDoc(xmlReadMemory(part.xml.bytes.data(), static_cast<int>(part.xml.bytes.size()), nullptr, nullptr,
                             XML_PARSE_NONET | XML_PARSE_HUGE));
  }
}

// By the byte, so that the two figures of a document are compared at sight.
bool countBoth(const std::string& name, const std::function<std::vector<WordPackage::Part>()>& make) {
  const std::size_t bytes = bytesOf(make());
  const auto on = [make](void (*work)(const std::vector<WordPackage::Part>&)) {
    return [make, work] {
      const auto parts = std::make_shared<std::vector<WordPackage::Part>>(make());
      return std::function<void()>([parts, work] { work(*parts); });
    };
  };
  countInstructions({.name = name + ": read, a byte", .prepare = on(readAll), .repetitions = 3, .perform = bytes});
  countInstructions({.name = name + ": parsed, a byte", .prepare = on(parseAll), .repetitions = 3, .perform = bytes});
  return true;
}

[[maybe_unused]] const bool kCountsReal = countBoth("real report", realParts);
[[maybe_unused]] const bool kCountsMade =
    countBoth("2,000 styles, 20,000 paragraphs", [] { return madeParts(2'000, 20'000); });

void ReadWord(benchmark::State& state) {
  const auto parts = madeParts(2'000, static_cast<int>(state.range(0)));
  for (auto _ : state) readAll(parts);
}
BENCHMARK(ReadWord)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond);

void ParseWord(benchmark::State& state) {
  const auto parts = madeParts(2'000, static_cast<int>(state.range(0)));
  for (auto _ : state) parseAll(parts);
}
BENCHMARK(ParseWord)->Arg(50'000)->Unit(benchmark::kMillisecond);

/// What comes after reading: one changed style, written back and checked.
void WriteBackWord(benchmark::State& state) {
  const auto parts = madeParts(2'000, static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    auto document = EditableWordDocument::fromParts(parts, "bench.docx");
    OdfStyle& style = document->editor().style("S1");
    document->editor().set(style, {document->editor().assignment(style, "text.w.sz=99pt")});
    state.ResumeTiming();
    benchmark::DoNotOptimize(document->writtenParts());
    state.PauseTiming();
    document.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(WriteBackWord)->Arg(50'000)->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool kLinear = compare({"ReadWord/50000", "ReadWord/5000", 13});
[[maybe_unused]] const bool kParsed = compare({"ReadWord/50000", "ParseWord/50000", 2.5});
[[maybe_unused]] const bool kWritten = compare({"WriteBackWord/50000", "ReadWord/50000", 2});

}  // namespace
}  // namespace zt::bench
