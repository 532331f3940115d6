// SPDX-License-Identifier: MIT
#include "Silence.h"

#include <document/Finding.h>
#include <document/archive/DocumentArchive.h>
#include <insight/difference/DocumentDiff.h>
#include <insight/look/TextLook.h>
#include <wordprocessing/reading/TableParts.h>
#include <wordprocessing/reading/WordImporter.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

/// Any bytes as the parts of a WordprocessingML document, a line of "----" between two: main part, styles, numbering,
/// theme. They end in one error of reading or in a document, whose text can be looked at and which converts to an
/// archive that holds the same styles.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zt;
  constexpr std::array kKinds = {WordPartKind::document, WordPartKind::styles, WordPartKind::numbering,
                                 WordPartKind::theme};
  constexpr std::string_view kBetween = "\n----\n";
  const zt::fuzzing::Silence silence;
  WordPackage package;
  package.shown = "input";
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  for (const WordPartKind kind : kKinds) {
    const std::string_view part = rest.substr(0, rest.find(kBetween));
    package.parts.push_back({kind, {"part", "input", std::string(part)}});
    rest.remove_prefix(std::min(rest.size(), part.size() + kBetween.size()));
  }
  WordDocument raw;
  try {
    raw = WordDocument::read(std::move(package));
  } catch (const ReadError&) {
    return 0;
  }
  const ImportedWord word = importWord(raw);
  for (const WordParagraph& paragraph : raw.paragraphs) {
    TextPlace place{.paragraph = word.styleOfUse[paragraph.use].get()};
    if (!paragraph.runs.empty()) place.text = word.styleOfUse[paragraph.runs[0]].get();
    if (paragraph.table != kNowhere && raw.tables[paragraph.table].use != kNowhere) {
      place.table = word.styleOfUse[raw.tables[paragraph.table].use].get();
      place.tableParts = tablePartsOf(raw, paragraph, place.table);
    }
    (void)TextLook(*word.document, place).properties();
  }
  if (!word.document->stylesheet().indexesAreRight()) std::abort();
  const Ref<ZTDocument> again = readArchiveBytes(archiveBytes(*word.document), "again");
  if (!DocumentDiff(*word.document, *again).isEmpty()) std::abort();
  return 0;
}
