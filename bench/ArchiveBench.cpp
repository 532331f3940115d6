// SPDX-License-Identifier: MIT

// Loading and saving archives, beside what libxml2 itself takes for the same document in the same run.

#include "BenchStyles.h"
#include "BenchSupport.h"

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <support/ZTUDynamicCast.h>
#include <ztstyles/ZTSArchiving.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>

#include <libxml/parser.h>
#include <libxml/xmlsave.h>
#include <malloc.h>

#include <map>

namespace zt::bench {
namespace {

/// 20,000 of 100,000 styles are identified, in families of depth 2; three numbers each.
Ref<ZTSStylesheet> stylesheetOf(std::size_t count) {
  ZTSInitArchivingClassToElementNameMappings();
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  for (std::size_t index = 0; index < count; ++index) {
    const Ref<PropertyMap> map = PropertyMap::make(3);
    for (std::size_t key = 0; key < 3; ++key)
      map->set(keys()[(index + key) % 20],
               NSNumber::withReal(static_cast<double>(index) + 0.25 * static_cast<double>(key)));
    const bool isIdentified = index % 5 == 0;
    const std::size_t parent = index / 50 * 5;
    sheet->addStyle(make<PlainStyle>(
        {.identifier = isIdentified ? StringRef("style-" + std::to_string(index)) : StringRef(),
         .parentIdentifier = index % 50 == 0 ? StringRef() : StringRef("style-" + std::to_string(parent)),
         .overridePropertyMap = map.get()}));
  }
  return sheet;
}

const std::string& archiveOf(std::size_t count) {
  static auto* all = new std::map<std::size_t, std::string>;
  std::string& bytes = (*all)[count];
  if (bytes.empty()) {
    const Ref<ZTSStylesheet> sheet = stylesheetOf(count);
    auto archiver = make<ZTAXMLArchiver>(1);
    archiver->encodeRootObject(*sheet);
    bytes = archiver->bytes();
  }
  return bytes;
}

xmlDoc* parsed(const std::string& bytes) {
  return xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                       XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
}

Ref<ZTSStylesheet> loaded(const std::string& bytes) {
  return ZTUDynamicCast<ZTSStylesheet>(ZTAXMLUnarchiver::unarchiverForBytes(bytes)->unarchiveRootObject());
}

/// Puts in order what the run before has freed, outside the measured time: a document is saved once, not over and
/// over, and else the first large block of a run pays for all nodes of the one before.
void settleHeap(benchmark::State& state) {
  state.PauseTiming();
  mallopt(M_MXFAST, 64 * sizeof(std::size_t) / 4);  // the usual setting; giving it joins the free blocks
  state.ResumeTiming();
}

constexpr std::int64_t kStyles = 100'000;

/// libxml2's own tree of the bytes, made and freed.
void BareParse(benchmark::State& state) {
  const std::string& bytes = archiveOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    settleHeap(state);
    xmlFreeDoc(parsed(bytes));
  }
}
BENCHMARK(BareParse)->Arg(kStyles)->Unit(benchmark::kMillisecond);

/// Bytes to a linked stylesheet, the tree freed, the stylesheet not.
void Load(benchmark::State& state) {
  const std::string& bytes = archiveOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    settleHeap(state);
    Ref<ZTSStylesheet> sheet = loaded(bytes);
    state.PauseTiming();
    sheet.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(Load)->Arg(10'000)->Arg(kStyles)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
[[maybe_unused]] const bool kLoad = compare({"Load/100000", "BareParse/100000", 1.15});
[[maybe_unused]] const bool kLoadLinear = compare({"Load/1000000", "Load/100000", 20});

/// What a loaded stylesheet keeps, with its numbers, once the tree is freed.
void LoadedBytes(benchmark::State& state) {
  const std::string& bytes = archiveOf(static_cast<std::size_t>(state.range(0)));
  double each = 0;
  for (auto _ : state) {
    loaded(bytes).reset();
    malloc_trim(0);
    const auto before = mallinfo2();
    const Ref<ZTSStylesheet> sheet = loaded(bytes);
    const auto after = mallinfo2();
    each = static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
           static_cast<double>(state.range(0));
  }
  state.counters["bytesPerStyle"] = each;
}
BENCHMARK(LoadedBytes)->Arg(kStyles)->Iterations(1)->Unit(benchmark::kMillisecond);

/// The ready tree to text, by libxml2 alone.
void BareSerialise(benchmark::State& state) {
  xmlDoc* document = parsed(archiveOf(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    settleHeap(state);
    xmlChar* text = nullptr;
    int length = 0;
    xmlDocDumpMemory(document, &text, &length);
    xmlFree(text);
  }
  xmlFreeDoc(document);
}
BENCHMARK(BareSerialise)->Arg(kStyles)->Unit(benchmark::kMillisecond);

/// A copy of every element of a tree with the functions that the archiver uses.
void copyInto(xmlNode* to, const xmlNode* from) {
  for (const xmlAttr* each = from->properties; each != nullptr; each = each->next) {
    xmlSetNsProp(to, &CorvaleNamespace, each->name, each->children->content);
  }
  for (const xmlNode* each = from->children; each != nullptr; each = each->next) {
    if (each->type == XML_ELEMENT_NODE) {
      copyInto(xmlNewChild(to, &CorvaleNamespace, each->name, nullptr), each);
    } else if (from->children->next == nullptr) {
      xmlAddChild(to, xmlNewDocText(to->doc, each->content));
    }
  }
}

/// The same tree built and dumped by hand; freed untimed, as for `Save`.
void BuildAndDumpByHand(benchmark::State& state) {
  xmlDoc* model = parsed(archiveOf(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    settleHeap(state);
    xmlDoc* document = xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"));
    document->dict = xmlDictCreate();
    xmlNode* root = xmlNewDocNode(document, nullptr, model->children->name, nullptr);
    xmlDocSetRootElement(document, root);
    xmlNewNs(root, CorvaleNamespace.href, CorvaleNamespace.prefix);
    xmlSetNs(root, &CorvaleNamespace);
    copyInto(root, model->children);
    xmlChar* text = nullptr;
    int length = 0;
    xmlDocDumpFormatMemoryEnc(document, &text, &length, "UTF-8", 1);
    xmlFree(text);
    state.PauseTiming();
    xmlFreeDoc(document);
    state.ResumeTiming();
  }
  xmlFreeDoc(model);
}
BENCHMARK(BuildAndDumpByHand)->Arg(kStyles)->Unit(benchmark::kMillisecond);

/// A stylesheet to bytes. The archiver is freed untimed: the bare serialisation does not free its tree either.
void Save(benchmark::State& state) {
  const Ref<ZTSStylesheet> sheet = stylesheetOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    settleHeap(state);
    auto archiver = make<ZTAXMLArchiver>(1);
    archiver->encodeRootObject(*sheet);
    benchmark::DoNotOptimize(archiver->bytes());
    state.PauseTiming();
    archiver.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(Save)->Arg(kStyles)->Unit(benchmark::kMillisecond);
[[maybe_unused]] const bool kSave = compare({"Save/100000", "BareSerialise/100000", 2.2});
[[maybe_unused]] const bool kSaveByHand = compare({"Save/100000", "BuildAndDumpByHand/100000", 1.1});

/// The default writing order of identified styles: in one family, or in one chain.
void WritingOrder(benchmark::State& state) {
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    const std::int64_t parent = state.range(1) != 0 ? index - 1 : 0;
    sheet->addStyle(
        make<PlainStyle>({.identifier = "s" + std::to_string(index),
                          .parentIdentifier = index == 0 ? StringRef() : StringRef("s" + std::to_string(parent))}));
  }
  for (auto _ : state) benchmark::DoNotOptimize(sheet->p_orderedIdentifiedStyles());
}
BENCHMARK(WritingOrder)
    ->ArgNames({"", "deep"})
    ->Args({20'000, 0})
    ->Args({100'000, 0})
    ->Args({20'000, 1})
    ->Args({100'000, 1})
    ->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool kParseCount = countInstructions({"BareParse per style",
                                                             [] {
                                                               const std::string& bytes = archiveOf(5'000);
                                                               return [&bytes] { xmlFreeDoc(parsed(bytes)); };
                                                             },
                                                             3, 0, 5'000});
[[maybe_unused]] const bool kLoadCount = countInstructions({"Load and free per style",
                                                            [] {
                                                              const std::string& bytes = archiveOf(5'000);
                                                              return [&bytes] { loaded(bytes); };
                                                            },
                                                            3, 0, 5'000});

[[maybe_unused]] const bool kSerialiseCount = countInstructions({"BareSerialise per style",
                                                                 [] {
                                                                   static xmlDoc* const document =
                                                                       parsed(archiveOf(5'000));
                                                                   return [] {
                                                                     xmlChar* text = nullptr;
                                                                     int length = 0;
                                                                     xmlDocDumpMemory(document, &text, &length);
                                                                     xmlFree(text);
                                                                   };
                                                                 },
                                                                 3, 0, 5'000});
[[maybe_unused]] const bool kSaveCount = countInstructions({"Save per style",
                                                            [] {
                                                              return [sheet = stylesheetOf(5'000)] {
                                                                auto archiver = make<ZTAXMLArchiver>(1);
                                                                archiver->encodeRootObject(*sheet);
                                                                benchmark::DoNotOptimize(archiver->bytes());
                                                              };
                                                            },
                                                            3, 0, 5'000});

}  // namespace
}  // namespace zt::bench
