// SPDX-License-Identifier: MIT
#include <insight/explain/Explanation.h>
#include <insight/reuse/VariationTrace.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/console/Report.h>

#include <platform/NSNull.h>

#include <fmt/format.h>

#include <ostream>

namespace zt {

namespace {

class VaryCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("vary", "Ask for a style with new values: which style answers, and why");
    command->add_option("FILE", mFile, "The document")->required();
    command->add_option("STYLE", mStyle, "The style to start from, as for explain")->required();
    command->add_option("PROPERTY=VALUE", mAssignments, "New values; nothing after = stands for explicitly no value");
    command->add_flag("--locked", mIsLocked, "Ask for a locked style");
    command->add_flag("--no-reuse", mMakesAlways, "Make a style in any case");
    command->add_flag("--json", mAsJson, "Write one JSON object: wanted values, candidates, the answer");
    command->footer(
        "Examples:\n"
        "  ztstyles vary letter.odt paragraph:Standard text.fo.font-weight=bold\n"
        "  ztstyles vary letter.odt P1 text.fo.font-size=12pt paragraph.fo.margin-left=0cm");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mFile);
    const std::vector<OdfStyle*> styles = document->stylesCalled(mStyle);
    if (styles.empty()) throw UsageError(mFile + " has no style '" + mStyle + "'");
    if (styles.size() > 1) {
      throw UsageError("'" + mStyle + "' is the name of several styles, such as " + document->labelOf(*styles[0]) +
                       " and " + document->labelOf(*styles[1]));
    }
    OdfStyle& style = *styles.front();
    const Ref<PropertyMap> values = PropertyMap::make();
    for (const std::string& assignment : mAssignments) assign(style, assignment, *values);
    const VariationTrace trace = traceVariation(*document, style, *values, mIsLocked, !mMakesAlways);
    if (mAsJson) {
      printJson(asJson(*document, style, trace), console);
    } else {
      print(*document, style, trace, console);
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  static void assign(const OdfStyle& style, const std::string& assignment, PropertyMap& values) {
    const std::size_t sign = assignment.find('=');
    if (sign == std::string::npos || sign == 0)
      throw UsageError("'" + assignment + "' is not of the form PROPERTY=VALUE");
    const PropertyKey key(assignment.substr(0, sign));
    const std::string text = assignment.substr(sign + 1);
    if (!style.canInspectProperty(key)) {
      throw UsageError("styles of the family '" + style.familyName() + "' have no property '" +
                       std::string(key.view()) + "'");
    }
    const Ref<NSObject> value = text.empty() ? Ref<NSObject>(NSNull::null()) : readValue(propertyRule(key), text);
    if (!value || !style.validateValueForProperty(isNull(value.get()) ? nullptr : value.get(), key)) {
      throw UsageError("'" + text + "' is no value for '" + std::string(key.view()) + "'");
    }
    values.set(key, value);
  }

  static std::string answerText(const ZTDocument& document, const VariationTrace& trace) {
    if (!trace.answer) return "no style";
    return trace.wasMade ? "a new style, based on " + trace.base : document.labelOf(*trace.answer);
  }

  static void print(const ZTDocument& document, const OdfStyle& style, const VariationTrace& trace,
                    const Console& console) {
    console.out << "variation of " << console.bold(document.labelOf(style)) << ", relative to its base " << trace.base
                << '\n';
    if (trace.wanted->isEmpty()) console.out << "  nothing is wanted that the base does not have\n";
    for (const PropertyMap::Entry& entry : *trace.wanted) {
      console.out << "  " << entry.key.view() << " = " << shownValue(document, entry.key, entry.value.get()) << '\n';
    }
    for (const VariationTrace::Candidate& candidate : trace.candidates) {
      console.out << (candidate.isAnswer ? console.green("+ ") : "- ") << candidate.role;
      if (!candidate.style.empty()) console.out << ' ' << candidate.style;
      console.out << ": " << candidate.reason << '\n';
    }
    console.out << (trace.wasMade ? "made: " : "found: ") << console.bold(answerText(document, trace)) << '\n';
  }

  static nlohmann::ordered_json asJson(const ZTDocument& document, const OdfStyle& style, const VariationTrace& trace) {
    nlohmann::ordered_json json{{"document", document.shown}, {"style", document.labelOf(style)}, {"base", trace.base}};
    json["wanted"] = nlohmann::ordered_json::object();
    for (const PropertyMap::Entry& entry : *trace.wanted) {
      json["wanted"][std::string(entry.key.view())] = shownValue(document, entry.key, entry.value.get());
    }
    json["candidates"] = nlohmann::ordered_json::array();
    for (const VariationTrace::Candidate& candidate : trace.candidates) {
      json["candidates"].push_back({{"role", candidate.role},
                                    {"style", candidate.style},
                                    {"answers", candidate.isAnswer},
                                    {"reason", candidate.reason}});
    }
    json["made"] = trace.wasMade;
    json["answer"] = answerText(document, trace);
    json["findings"] = findingsAsJson(document.findings);
    return json;
  }

  std::string mFile;
  std::string mStyle;
  std::vector<std::string> mAssignments;
  bool mIsLocked = false;
  bool mMakesAlways = false;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeVaryCommand() { return std::make_unique<VaryCommand>(); }

}  // namespace zt
