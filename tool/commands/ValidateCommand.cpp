// SPDX-License-Identifier: MIT
#include <insight/validation/FindingsJson.h>
#include <insight/validation/ModelCheck.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/Report.h>
#include <tool/console/TextTable.h>

#include <ostream>

namespace zt {

namespace {

class ValidateCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("validate", "Check a document's styles and say what is wrong with them");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_flag("--json", mAsJson, "Write one JSON object with the findings");
    command->footer(
        "Tells what was unclean in the file, then what is wrong between the styles that were read from it.\n"
        "Exit code 0: nothing to tell. 1: findings. 3: nothing could be read.\n"
        "Examples:\n"
        "  ztstyles validate letter.odt\n"
        "  ztstyles validate --json letter.fodt | jq '.findings[] | {file, line, message}'");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    std::vector<Finding> findings = document->findings;
    for (Finding& finding : checkModel(*document)) findings.push_back(std::move(finding));
    if (mAsJson) {
      printJson({{"document", document->shown},
                 {"styles", document->stylesheet().styles().count()},
                 {"findings", findingsAsJson(findings)}},
                console);
    } else {
      for (const Finding& finding : findings) print(finding, console);
    }
    console.err << printable(document->shown) << ": " << document->stylesheet().styles().count() << " styles, "
                << (findings.empty() ? "no" : std::to_string(findings.size()))
                << (findings.size() == 1 ? " finding" : " findings") << '\n';
    return codeFor(findings);
  }

 private:
  static void print(const Finding& finding, const Console& console) {
    const std::string severity(severityName(finding.severity));
    console.out << printable(finding.place.text()) << ": "
                << (finding.severity == Finding::Severity::note ? console.faint(severity) : console.yellow(severity))
                << ": ";
    if (!finding.style.empty()) console.out << printable(finding.style) << ": ";
    console.out << printable(finding.message) << '\n';
  }

  std::string mFile;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeValidateCommand() { return std::make_unique<ValidateCommand>(); }

}  // namespace zt
