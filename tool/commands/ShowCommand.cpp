// SPDX-License-Identifier: MIT
#include <insight/tables/StyleTables.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/Report.h>
#include <tool/console/TextTable.h>

#include <ostream>

namespace zt {

namespace {

class ShowCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("show", "Show stylesheets and their styles as tables");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_option("--style", mStyle, "Only the styles that this one refers to, with the properties that do so");
    command->add_option("--width", mWidth,
                        "Cut lines to so many columns; 0 cuts nothing. The terminal's width without it");
    command->add_flag("--json", mAsJson, "Write one JSON object with all tables");
    command->footer(
        "Examples:\n"
        "  ztstyles show letter.odt\n"
        "  ztstyles show letter.odt --style List_20_Bullet\n"
        "  ztstyles show --json letter.fodt | jq '.tables[].rows[].identifier'");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    std::vector<ShownTable> tables;
    if (mStyle.empty()) {
      tables = tablesOfStylesheets(document);
    } else {
      for (OdfStyle* style : document->stylesCalled(mStyle)) tables.push_back(tableOfReferences(document, *style));
      if (tables.empty()) throw UsageError(mFile + " has no style '" + mStyle + "'");
    }
    if (mAsJson) {
      nlohmann::ordered_json json{{"document", document->shown}, {"tables", nlohmann::ordered_json::array()}};
      for (const ShownTable& table : tables) json["tables"].push_back(tableAsJson(table));
      json["findings"] = findingsAsJson(document->findings);
      printJson(json, console);
    } else {
      for (const ShownTable& table : tables) print(table, console, &table == &tables.front());
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  void print(const ShownTable& shown, const Console& console, bool isFirst) const {
    const std::size_t width = mWidth.value_or(terminalWidth());
    console.out << (isFirst ? "" : "\n") << console.bold(printable(shown.title, width)) << '\n';
    std::vector<std::vector<std::string>> rows = rowsOf(shown);
    if (rows.empty()) {
      console.out << console.faint("none") << '\n';
      return;
    }
    TextTable table(headingsOf(shown));
    for (std::vector<std::string>& row : rows) table.addRow(std::move(row));
    table.print(console.out, width);
  }

  std::string mFile;
  std::string mStyle;
  std::optional<std::size_t> mWidth;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeShowCommand() { return std::make_unique<ShowCommand>(); }

}  // namespace zt
