// SPDX-License-Identifier: MIT
#include <insight/explain/ExplanationJson.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/ExplanationText.h>
#include <tool/console/Report.h>

#include <ostream>

namespace zt {

namespace {

class ExplainCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("explain", "Say what styles look like and why");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_option("STYLE", mStyle,
                        "A style: an identifier (paragraph:Heading), a name (P1), with its part where that is needed\n"
                        "(content.xml:paragraph:P1), or a display name. All styles without it");
    command->add_option("PROPERTY", mProperty, "A property (text.fo.font-size): shown level by level");
    command->add_flag("--json", mAsJson, "Write one JSON object: styles with values, entries and roles");
    command->footer(
        "For each property the effective value, which style sets it, and what that hides. An entry \"wins\" if it is\n"
        "the nearest; where it is a percentage of the parent's value, the entries that it is a share of are its "
        "\"base\".\n"
        "Examples:\n"
        "  ztstyles explain letter.odt Heading_20_1\n"
        "  ztstyles explain letter.odt paragraph:Title text.fo.font-size\n"
        "  ztstyles explain --json letter.fodt | jq '.styles[] | {style, size: .values[\"text.fo.font-size\"]}'");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    Explainer explainer(*document);
    std::vector<StyleExplanation> wanted;
    if (!mStyle.empty()) {
      for (const OdfStyle* style : document->stylesCalled(mStyle)) wanted.push_back(explainer.explain(*style));
      if (wanted.empty()) throw UsageError(mFile + " has no style '" + mStyle + "'");
      if (!mProperty.empty()) keepProperty(wanted);
    }
    if (mAsJson) {
      writeJson(*document, explainer, wanted, console);
    } else if (!mProperty.empty()) {
      for (const StyleExplanation& explanation : wanted) {
        printProperty(*document, explanation, explanation.properties.front(), console);
      }
    } else {
      bool isFirst = true;
      const auto print = [&](const StyleExplanation& explanation) {
        if (!isFirst) console.out << '\n';
        isFirst = false;
        printExplanation(*document, explanation, console);
      };
      if (mStyle.empty()) {
        explainer.explainAll(print);
      } else {
        for (const StyleExplanation& explanation : wanted) print(explanation);
      }
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  void keepProperty(std::vector<StyleExplanation>& explanations) const {
    std::erase_if(explanations, [this](StyleExplanation& explanation) {
      std::erase_if(explanation.properties,
                    [this](const ExplainedProperty& property) { return property.key.view() != mProperty; });
      return explanation.properties.empty();
    });
    if (explanations.empty()) throw UsageError("nothing sets '" + mProperty + "' for " + mStyle);
  }

  // Styles are written one by one: a document may hold thousands, each with dozens of explained values.
  void writeJson(const ZTDocument& document, Explainer& explainer, const std::vector<StyleExplanation>& wanted,
                 const Console& console) const {
    using Json = nlohmann::ordered_json;
    const auto dumped = [](const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); };
    Json fonts = Json::object();
    for (const auto& [font, family] : document.fontFamilies) fonts[font] = family;
    console.out << "{\"document\":" << dumped(document.shown) << ",\n\"font_families\":" << dumped(fonts)
                << ",\n\"styles\":[";
    bool isFirst = true;
    const auto write = [&](const StyleExplanation& explanation) {
      console.out << (isFirst ? "\n" : ",\n") << dumped(explanationAsJson(document, explanation));
      isFirst = false;
    };
    if (mStyle.empty()) {
      explainer.explainAll(write);
    } else {
      for (const StyleExplanation& explanation : wanted) write(explanation);
    }
    console.out << "\n],\n\"findings\":" << dumped(findingsAsJson(document.findings)) << "}\n";
  }

  std::string mFile;
  std::string mStyle;
  std::string mProperty;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeExplainCommand() { return std::make_unique<ExplainCommand>(); }

}  // namespace zt
