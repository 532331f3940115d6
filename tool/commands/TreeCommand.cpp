// SPDX-License-Identifier: MIT
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/ForestText.h>
#include <tool/console/Report.h>

#include <ostream>

namespace zt {

namespace {

class TreeCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("tree", "Show which style inherits from which, family by family");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_option("--family", mFamily, "Only this family, such as paragraph");
    command->add_flag("--all", mWithAutomatic,
                      "Show automatic styles and list levels too, which are only counted otherwise");
    auto* json =
        command->add_flag("--json", mAsJson, "Write a list of nodes with their parents and counts of children");
    command->add_flag("--dot", mAsDot, "Write a graph for Graphviz")->excludes(json);
    command->footer(
        "Examples:\n"
        "  ztstyles tree letter.odt\n"
        "  ztstyles tree --family text --all letter.fodt\n"
        "  ztstyles tree --dot letter.odt | dot -Tsvg > styles.svg");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    const StyleForest forest(*document, mFamily, mWithAutomatic);
    if (!mFamily.empty() && forest.nodes().empty())
      throw UsageError(mFile + " has no styles of the family '" + mFamily + "'");
    if (mAsJson) {
      nlohmann::ordered_json json = forest.asJson();
      json["findings"] = findingsAsJson(document->findings);
      printJson(json, console);
    } else if (mAsDot) {
      console.out << forest.asDot();
    } else {
      printForest(forest, console);
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  std::string mFile;
  std::string mFamily;
  bool mWithAutomatic = false;
  bool mAsJson = false;
  bool mAsDot = false;
};

}  // namespace

std::unique_ptr<Command> makeTreeCommand() { return std::make_unique<TreeCommand>(); }

}  // namespace zt
