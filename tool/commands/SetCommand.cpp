// SPDX-License-Identifier: MIT
#include <insight/change/ChangeTrace.h>
#include <insight/explain/Explanation.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/commands/WriteOptions.h>
#include <tool/console/Report.h>

#include <platform/ZTFormat.h>

#include <fmt/format.h>

#include <ostream>

namespace zt {

namespace {

using Assignment = DocumentEditor::Assignment;

class SetCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("set", "Change values of a style and say what that sets off");
    command->add_option("FILE", mFile, "The document; it is only read without -o and --in-place")->required();
    command->add_option("STYLE", mStyle, "The style, as `explain` takes it; it must be one")->required();
    command
        ->add_option("PROPERTY=VALUE", mAssignments,
                     "A value to set (text.fo.font-size=14pt); PROPERTY= sets explicitly no value, PROPERTY alone "
                     "removes the\nstyle's own value, so that it inherits again")
        ->required();
    command->add_option("--lock", mLocked, "Locks a style first: it keeps its look. May be given several times")
        ->allow_extra_args(false);
    command->add_flag("--keep-look", mKeepsLook, "What inherits from the style looks as before");
    command->add_flag("--trace", mTraces, "Tell in order what happened");
    CLI::Option* undo = command->add_flag("--undo", mUndoes, "Then take the change back");
    command->add_flag("--redo", mRedoes, "Then do it again")->needs(undo);
    mOptions.addTo(*command);
    command->add_flag("--json", mAsJson, "Write one JSON object: phases with events and values before and after");
    command->footer(
        "The change is made in one undo group of the document in memory. With -o or --in-place the document is "
        "written;\n"
        "what must not look different and does keeps it from that.\n"
        "Examples:\n"
        "  ztstyles set letter.odt Standard text.fo.font-size=14pt --trace\n"
        "  ztstyles set letter.odt Standard text.fo.font-size=14pt -o larger.odt\n"
        "  ztstyles set letter.odt paragraph:Heading fo.color=#ff0000 --lock Heading_20_1 --trace --undo --redo");
    return command;
  }

  ExitCode run(const Console& console) override {
    const std::unique_ptr<EditableDocument> editable = mOptions.concernDocument() ? openForEditing(mFile) : nullptr;
    const Ref<ZTDocument> document = editable ? Ref<ZTDocument>(&editable->document()) : readDocument(mFile);
    DocumentEditor plain(*document);
    DocumentEditor& editor = editable ? editable->editor() : plain;
    OdfStyle& style = oneStyle(*document, mStyle);
    const std::vector<Assignment> assignments = assignmentsFor(editor, style);
    NSUndoManager& manager = *document->undoManager();
    manager.disableUndoRegistration();
    for (const std::string& locked : mLocked) oneStyle(*document, locked).setIsLocked(true);
    manager.enableUndoRegistration();

    ChangeTrace trace(*document);
    Json phases = Json::array();
    const auto phase = [&](const char* name, ChangeTrace::Phase kind, const std::function<void()>& work) {
      const Json before = valuesOf(*document, style, assignments);
      const std::vector<ChangeEvent> events = trace.record(kind, work);
      phases.push_back({{"phase", name}, {"before", before}, {"after", valuesOf(*document, style, assignments)}});
      phases.back()["events"] = eventsAsJson(events);
      if (!mAsJson) print(phases.back(), *document, style, console);
    };
    phase("change", ChangeTrace::Phase::change, [&] {
      manager.performInGroup([&] { editor.set(style, assignments, mKeepsLook ? KeepLook::yes : KeepLook::no); });
    });
    if (mUndoes && manager.canUndo()) phase("undo", ChangeTrace::Phase::undo, [&] { manager.undo(); });
    if (mRedoes && manager.canRedo()) phase("redo", ChangeTrace::Phase::redo, [&] { manager.redo(); });
    if (editable && !(mAsJson && mOptions.areDry())) mOptions.finish(*editable, mFile, console);
    if (mAsJson) {
      printJson({{"document", document->shown},
                 {"style", document->labelOf(style)},
                 {"phases", phases},
                 {"findings", findingsAsJson(document->findings)}},
                console);
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  using Json = nlohmann::ordered_json;

  OdfStyle& oneStyle(const ZTDocument& document, const std::string& text) const {
    const std::vector<OdfStyle*> styles = document.stylesCalled(text);
    if (styles.empty()) throw UsageError(mFile + " has no style '" + text + "'");
    if (styles.size() == 1) return *styles.front();
    std::string names;
    for (std::size_t i = 0; i < styles.size() && i < 5; ++i)
      names += (i > 0 ? ", " : "") + document.labelOf(*styles[i]);
    throw UsageError("'" + text + "' names " + std::to_string(styles.size()) + " styles: " + names +
                     (styles.size() > 5 ? ", ..." : ""));
  }

  std::vector<Assignment> assignmentsFor(const DocumentEditor& editor, const OdfStyle& style) const {
    try {
      std::vector<Assignment> assignments;
      for (const std::string& text : mAssignments) assignments.push_back(editor.assignment(style, text));
      return assignments;
    } catch (const EditError& error) {
      throw UsageError(error.what());
    }
  }

  /// The effective values that this is about: of the style, and of those that were locked.
  Json valuesOf(const ZTDocument& document, const OdfStyle& style, const std::vector<Assignment>& assignments) const {
    Json values = Json::object();
    const auto add = [&](const OdfStyle& of) {
      Json& own = values[document.labelOf(of)];
      for (const Assignment& each : assignments) {
        const Ref<NSObject> value = of.valueForProperty(each.key);
        own[std::string(each.key.view())] = value ? Json(shownValue(document, each.key, value.get())) : Json();
      }
    };
    add(style);
    for (const std::string& locked : mLocked) add(oneStyle(document, locked));
    return values;
  }

  static Json eventsAsJson(const std::vector<ChangeEvent>& events) {
    Json all = Json::array();
    for (const ChangeEvent& event : events) {
      Json json = {{"event", eventKindName(event.kind)}};
      if (!event.style.empty()) json["style"] = event.style;
      if (!event.text.empty()) json["text"] = event.text;
      if (!event.properties.empty()) json["properties"] = event.properties;
      all.push_back(std::move(json));
    }
    return all;
  }

  void print(const Json& phase, const ZTDocument& document, const OdfStyle& style, const Console& console) const {
    const auto shown = [](const Json& value) {
      return value.is_null() ? std::string("(none)") : value.get<std::string>();
    };
    console.out << console.bold(phase["phase"].get<std::string>() + " of " + document.labelOf(style)) << '\n';
    if (mTraces) {
      for (const Json& event : phase["events"]) {
        std::string line = event["event"].get<std::string>();
        line.resize(11, ' ');
        line += event.value("style", "");
        std::string properties;
        for (const Json& each : event.value("properties", Json::array()))
          properties += (properties.empty() ? "" : ", ") + each.get<std::string>();
        if (!properties.empty()) line += ": " + properties;
        if (event.contains("text"))
          line += (event.contains("style") ? " [" : "") + event["text"].get<std::string>() +
                  (event.contains("style") ? "]" : "");
        console.out << "  " << singleLine(line) << '\n';
      }
    }
    for (const auto& [label, values] : phase["after"].items()) {
      for (const auto& [key, value] : values.items()) {
        console.out << "  "
                    << singleLine(fmt::format("{}  {}: {} -> {}", label, key, shown(phase["before"][label][key]),
                                              shown(value)))
                    << '\n';
      }
    }
  }

  WriteOptions mOptions;
  std::string mFile;
  std::string mStyle;
  std::vector<std::string> mAssignments;
  bool mKeepsLook = false;
  std::vector<std::string> mLocked;
  bool mTraces = false;
  bool mUndoes = false;
  bool mRedoes = false;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeSetCommand() { return std::make_unique<SetCommand>(); }

}  // namespace zt
