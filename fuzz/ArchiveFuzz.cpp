// SPDX-License-Identifier: MIT
#include "Exercise.h"
#include "Silence.h"

#include <document/Finding.h>
#include <document/archive/DocumentArchive.h>
#include <insight/difference/DocumentDiff.h>

#include <support/ZTUAssertionHandler.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

/// Any bytes as an archive: they end in one error of reading or in a document. What was read passes its own
/// checks, can be written, and reads back as itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zt;
  const zt::fuzzing::Silence silence;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  Ref<ZTDocument> document;
  try {
    document = readArchiveBytes(bytes, "input", size % 2 != 0);
  } catch (const ReadError&) {
    return 0;
  }
  const std::string text = archiveBytes(*document, {.isDiffable = true});
  const Ref<ZTDocument> again = readArchiveBytes(text, "again", true);
  if (!DocumentDiff(*document, *again).isEmpty() && document->findings.empty()) std::abort();
  if (archiveBytes(*again, {.isDiffable = true}) != text && document->findings.empty()) std::abort();
  (void)archiveBytes(*again, {.version = 1, .compression = ZTACompression::gzip});
  fuzzing::exercise(*document);
  return 0;
}
