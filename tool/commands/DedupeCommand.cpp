// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>
#include <insight/reuse/Deduplication.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/commands/WriteOptions.h>
#include <tool/console/Report.h>

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace zt {

namespace {

class DedupeCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command =
        tool.add_subcommand("dedupe", "Replay automatic styles as formatting requests: how many remain");
    command->add_option("FILE", mFile, "The document, or an archive")->required();
    mOptions.addTo(*command,
                   "Write the document that results; an archive of the styles that remain if OUT ends in .zts "
                   "(.zts.gz: packed)");
    command->add_flag("--ignore-revision-marks", mIgnoresRevisionMarks,
                      "In a document that is written, revision ids are no formatting");
    command->add_flag("--lists", mMergesLists,
                      "In a document that is written, equal automatic list styles become one, too, where no list is "
                      "continued");
    command->add_flag("--list", mShowsAll, "Show for each automatic style which style answers it");
    command->add_flag("--json", mAsJson, "Write one JSON object: counts by family, and the answer to each style");
    command->footer(
        "Each automatic style, and each level of a list, is asked for as a variation of its parent. \"Found\" are\n"
        "those that an earlier one or the parent itself answers, \"made\" those that remain. References and uses\n"
        "go over to the answers. In a document that is written, automatic styles that say the same as an earlier one\n"
        "of their part and parent give way to it; list styles stay apart without --lists.\n"
        "Examples:\n"
        "  ztstyles dedupe letter.odt\n"
        "  ztstyles dedupe letter.odt --ignore-revision-marks -o small.odt\n"
        "  ztstyles dedupe letter.odt -o small.zts && ztstyles stats small.zts\n"
        "  ztstyles dedupe --list letter.fodt | grep paragraph:");
    return command;
  }

  ExitCode run(const Console& console) override {
    if (mOptions.concernDocument()) return writeDocument(console);
    const Ref<ZTDocument> document = readDocument(mFile);
    const Deduplication result(*document);
    const std::size_t different = result.total().different;
    const std::string& out = mOptions.out();
    if (!out.empty() && different == 0) {
      refuseArchive(*document, out, mOptions.isForced());
      saveArchive(*document, out, {.compression = compressionForName(out)});
    }
    if (mAsJson) {
      printJson(asJson(result, *document), console);
    } else {
      print(result, console);
    }
    printFindings(document->findings, console);
    if (different == 0) return codeFor(document->findings);
    console.err << "ztstyles: " << different << " styles look different"
                << (out.empty() ? "" : "; '" + out + "' is not written") << '\n';
    return ExitCode::findings;
  }

 private:
  // Only what is safe in a file: automatic styles of one part and one parent that say the same become one.
  ExitCode writeDocument(const Console& console) const {
    const std::unique_ptr<EditableDocument> editable = openForEditing(mFile);
    ZTDocument& document = editable->document();
    std::vector<Ref<OdfStyle>> gone;
    mOptions.perform(*editable, [&](DocumentEditor& editor) {
      gone = editor.dedupe({.ignoresRevisionMarks = mIgnoresRevisionMarks, .mergesLists = mMergesLists});
    });
    if (!mOptions.areDry()) mOptions.finish(*editable, mFile, console);
    if (mAsJson) {
      nlohmann::ordered_json json{{"document", document.shown}, {"gone", nlohmann::ordered_json::array()}};
      for (const Ref<OdfStyle>& style : gone) json["gone"].push_back(document.labelOf(*style));
      json["findings"] = findingsAsJson(document.findings);
      printJson(json, console);
    } else {
      for (const Ref<OdfStyle>& style : gone) {
        if (mShowsAll) console.out << document.labelOf(*style) << '\n';
      }
      console.out << fmt::format("{} automatic styles gave way to equal ones\n", gone.size());
    }
    if (!mAsJson && mOptions.areDry()) mOptions.finish(*editable, mFile, console);
    printFindings(document.findings, console);
    return ExitCode::done;
  }

  static double microseconds(const Deduplication& result) { return static_cast<double>(result.time().count()) / 1000; }

  void print(const Deduplication& result, const Console& console) const {
    if (mShowsAll) {
      for (const Deduplication::Answer& answer : result.answers()) {
        console.out << answer.style
                    << (answer.wasMade ? console.faint("  remains") : "  is " + console.bold(answer.answer)) << '\n';
      }
      if (!result.answers().empty()) console.out << '\n';
    }
    const Deduplication::Counts total = result.total();
    console.out << fmt::format("{:<20} {:>8} {:>8} {:>8}\n", "family", "before", "found", "made");
    const auto line = [&](const std::string& name, const Deduplication::Counts& counts) {
      console.out << fmt::format("{:<20} {:>8} {:>8} {:>8}", name, counts.before, counts.found, counts.made);
      if (counts.different != 0) console.out << console.yellow(fmt::format("  {} look different", counts.different));
      console.out << '\n';
    };
    for (const auto& [family, counts] : result.byFamily()) line(family, counts);
    line("all", total);
    const std::size_t requests = std::max<std::size_t>(total.before, 1);
    console.out << fmt::format("{} of {} anonymous styles remain; {} requests in {:.0f} us, {:.2f} us each\n",
                               total.made, total.before, total.before, microseconds(result),
                               microseconds(result) / static_cast<double>(requests));
  }

  static nlohmann::ordered_json asJson(const Deduplication& result, const ZTDocument& document) {
    const auto countsAsJson = [](const Deduplication::Counts& counts) {
      return nlohmann::ordered_json{
          {"before", counts.before}, {"found", counts.found}, {"made", counts.made}, {"different", counts.different}};
    };
    nlohmann::ordered_json json{{"document", document.shown}, {"total", countsAsJson(result.total())}};
    json["microseconds"] = microseconds(result);
    json["families"] = nlohmann::ordered_json::object();
    for (const auto& [family, counts] : result.byFamily()) json["families"][family] = countsAsJson(counts);
    json["styles"] = nlohmann::ordered_json::array();
    for (const Deduplication::Answer& answer : result.answers()) {
      json["styles"].push_back({{"style", answer.style}, {"answer", answer.answer}, {"made", answer.wasMade}});
    }
    json["findings"] = findingsAsJson(document.findings);
    return json;
  }

  std::string mFile;
  WriteOptions mOptions;
  bool mIgnoresRevisionMarks = false;
  bool mMergesLists = false;
  bool mShowsAll = false;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeDedupeCommand() { return std::make_unique<DedupeCommand>(); }

}  // namespace zt
