// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>
#include <insight/statistics/ModelStatistics.h>
#include <insight/validation/FindingsJson.h>
#include <opendocument/statistics/StyleStatistics.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/Report.h>
#include <tool/console/StatisticsText.h>
#include <wordprocessing/WordFormat.h>

#include <ostream>

namespace zt {

namespace {

class StatsCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("stats", "Count the styles of a document and what is redundant or unused");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_flag("--json", mAsJson, "Write all counts as one JSON object");
    command->footer(
        "Examples:\n"
        "  ztstyles stats letter.odt\n"
        "  ztstyles stats --json letter.fodt | jq .automatic_redundant");
    return command;
  }

  ExitCode run(const Console& console) override {
    if (isArchive(mFile) || wordFormat().recognises(mFile)) return runOnModel(console);
    const RawDocument document = RawDocument::read(Package::read(mFile));
    nlohmann::ordered_json statistics = styleStatistics(document);
    if (mAsJson) {
      statistics["findings"] = findingsAsJson(document.findings);
      printJson(statistics, console);
    } else {
      console.out << statisticsAsText(statistics);
    }
    printFindings(document.findings, console);
    return codeFor(document.findings);
  }

 private:
  // What a file of OpenDocument says redundantly is counted on its text. Of others the model is counted.
  ExitCode runOnModel(const Console& console) const {
    const Ref<ZTDocument> document = readDocument(mFile);
    const nlohmann::ordered_json counts = modelStatistics(*document);
    if (mAsJson) {
      nlohmann::ordered_json json = counts;
      json["findings"] = findingsAsJson(document->findings);
      printJson(json, console);
    } else {
      for (const auto& [what, number] : counts.items()) console.out << what << ": " << number.dump() << '\n';
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

  std::string mFile;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeStatsCommand() { return std::make_unique<StatsCommand>(); }

}  // namespace zt
