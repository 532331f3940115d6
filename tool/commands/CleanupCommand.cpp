// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>
#include <insight/reuse/UnusedStyles.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/Report.h>

#include <fmt/format.h>

#include <map>
#include <ostream>

namespace zt {

namespace {

class CleanupCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("cleanup", "List the styles that nothing in the document uses");
    command->add_option("FILE", mFile, "The document, or an archive")->required();
    command->add_option("-o,--out", mOut, "Write the styles that are left as an archive; packed if OUT ends in .gz");
    command->add_flag("--keep-named", mKeepsNamed, "Only automatic styles and list levels go");
    command->add_flag("--json", mAsJson, "Write one JSON object: what is removed, how many are left");
    command->footer(
        "A style is used if the text names it, or a used style inherits from it or refers to it. FILE is not "
        "changed.\n"
        "Examples:\n"
        "  ztstyles cleanup letter.odt\n"
        "  ztstyles cleanup letter.odt -o small.zts && ztstyles tree small.zts\n"
        "  ztstyles cleanup --keep-named --json letter.fodt | jq .removed[].style");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    const std::size_t before = document->stylesheet().styles().count();
    const std::vector<Ref<OdfStyle>> removed = removeUnusedStyles(*document, mKeepsNamed);
    if (!mOut.empty()) saveArchive(*document, mOut, {.compression = compressionForName(mOut)});
    if (mAsJson) {
      nlohmann::ordered_json json{{"document", document->shown}, {"before", before}, {"left", before - removed.size()}};
      json["removed"] = nlohmann::ordered_json::array();
      for (const Ref<OdfStyle>& style : removed) {
        json["removed"].push_back({{"style", document->labelOf(*style)},
                                   {"family", style->familyName()},
                                   {"place", document->placeOf(*style).text()}});
      }
      json["findings"] = findingsAsJson(document->findings);
      printJson(json, console);
    } else {
      std::map<std::string, std::size_t> byFamily;
      for (const Ref<OdfStyle>& style : removed) {
        ++byFamily[style->familyName()];
        console.out << document->labelOf(*style) << console.faint("  " + document->placeOf(*style).text()) << '\n';
      }
      if (!removed.empty()) console.out << '\n';
      for (const auto& [family, count] : byFamily) console.out << fmt::format("{:<20} {:>8}\n", family, count);
      console.out << fmt::format("{} of {} styles are used by nothing\n", removed.size(), before);
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  std::string mFile;
  std::string mOut;
  bool mKeepsNamed = false;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeCleanupCommand() { return std::make_unique<CleanupCommand>(); }

}  // namespace zt
