// SPDX-License-Identifier: MIT
#include "Exercise.h"
#include "Silence.h"

#include <document/Finding.h>
#include <document/archive/DocumentArchive.h>
#include <insight/difference/DocumentDiff.h>
#include <insight/explain/Explanation.h>
#include <opendocument/reading/StyleImporter.h>
#include <opendocument/statistics/StyleStatistics.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

/// Any bytes as a flat OpenDocument file: they end in one error of reading or in a document, which can be counted,
/// explained and converted to an archive that holds the same styles.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zt;
  if (size > 4096) return 0;  // a large document takes a tenth of a second, and small ones show as much
  const zt::fuzzing::Silence silence;
  RawDocument raw;
  Ref<ZTDocument> document;
  try {
    raw = RawDocument::read(Package::fromFlatText({reinterpret_cast<const char*>(data), size}, "input"));
    document = importStyles(raw);
  } catch (const ReadError&) {
    return 0;
  }
  (void)styleStatistics(raw);
  Explainer(*document).explainAll([](const StyleExplanation&) {});
  const Ref<ZTDocument> again = readArchiveBytes(archiveBytes(*document), "again");
  if (!DocumentDiff(*document, *again).isEmpty()) std::abort();
  fuzzing::exercise(*document);
  return 0;
}
