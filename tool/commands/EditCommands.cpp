// SPDX-License-Identifier: MIT
// The commands that edit a document: each is one edit in words, or a script of them.

#include <document/editing/EditScript.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/commands/WriteOptions.h>
#include <tool/console/Report.h>

#include <archiving/ZTAArchiveFile.h>

#include <memory>
#include <ostream>

namespace zt {

namespace {

class EditCommand : public Command {
 public:
  explicit EditCommand(const char* name) : mName(name) {}

  ExitCode run(const Console& console) override {
    const std::unique_ptr<EditableDocument> document = openForEditing(mFile);
    const std::vector<EditLine> lines = edits();
    mOptions.perform(*document, [&](DocumentEditor& editor) {
      const auto readTemplate = [this](const std::string& path) { return templateFor(path); };
      if (mName == "edit") return performEdits(editor, lines, readTemplate);
      performEdit(editor, lines.front().words, readTemplate);
    });
    if (mName == "apply" && !mOptions.areDry()) printChangedLooks(*document, console);
    mOptions.finish(*document, mFile, console);
    printFindings(document->document().findings, console);
    return ExitCode::done;
  }

 protected:
  CLI::App* addCommand(CLI::App& tool, const char* description, const char* footer) {
    CLI::App* command = tool.add_subcommand(mName, description);
    command->add_option("FILE", mFile, "The document: .odt, .ott, .fodt or a folder")->required();
    mOptions.addTo(*command);
    command->footer(std::string("Without -o and --in-place nothing is written, and what would change is shown.\n") +
                    footer);
    return command;
  }
  void addKeepLook(CLI::App& command, const char* help) { command.add_flag("--keep-look", mKeepsLook, help); }
  [[nodiscard]] virtual std::vector<EditLine> edits() const {
    std::vector<std::string> words = {mName};
    if (mKeepsLook) words.emplace_back("--keep-look");
    words.insert(words.end(), mWords.begin(), mWords.end());
    return {{0, std::move(words)}};
  }

  // Values of one format mean nothing in another.
  Ref<ZTDocument> templateFor(const std::string& path) const {
    if (formatName(path) != formatName(mFile)) {
      throw EditError(path + " is " + std::string(formatName(path)) + ", " + mFile + " is " +
                      std::string(formatName(mFile)) + "; styles are taken from a document of the same format");
    }
    Ref<ZTDocument> document = readDocument(path);
    refuseHalfRead(*document);
    return document;
  }

  std::string mName;
  std::string mFile;
  std::vector<std::string> mWords;
  bool mKeepsLook = false;
  WriteOptions mOptions;
};

class RenameCommand : public EditCommand {
 public:
  RenameCommand() : EditCommand("rename") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(tool, "Give a named style another name, wherever it is named",
                                   "Example:\n  ztstyles rename letter.odt Heading \"My heading\" -o new.odt");
    command->add_option("OLD NEW", mWords, "The style, and its name from now on")->required()->expected(2);
    return command;
  }
};

class MergeCommand : public EditCommand {
 public:
  MergeCommand() : EditCommand("merge") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(tool, "Let what uses some styles use another, and remove them",
                                   "Example:\n  ztstyles merge letter.odt Quote Citation Quotations --in-place");
    command->add_option("FROM... INTO", mWords, "The styles that go, and the one that stays")
        ->required()
        ->expected(2, 1000);
    return command;
  }
};

class ReparentCommand : public EditCommand {
 public:
  ReparentCommand() : EditCommand("reparent") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(tool, "Let a style inherit from another one",
                                   "Example:\n  ztstyles reparent letter.odt Quote Standard --keep-look --dry-run");
    command->add_option("STYLE PARENT", mWords, "The style, and a named style of its family")->required()->expected(2);
    addKeepLook(*command, "What the style inherited becomes its own where the parent says otherwise");
    return command;
  }
};

class RemoveCommand : public EditCommand {
 public:
  RemoveCommand() : EditCommand("remove") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(tool, "Remove styles; what uses them uses their parents",
                                   "Example:\n  ztstyles remove letter.odt Quote --keep-look -o new.odt");
    command->add_option("STYLE", mWords, "The styles that go")->required()->expected(1, 1000);
    addKeepLook(*command, "What used the style looks as before, as a variation of the parent");
    return command;
  }
};

class PromoteCommand : public EditCommand {
 public:
  PromoteCommand() : EditCommand("promote") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command =
        addCommand(tool, "Make an automatic style a named one, with all that look the same",
                   "Example:\n  ztstyles promote letter.odt content.xml:paragraph:P1 \"Fine print\" -o new.odt");
    command->add_option("STYLE NAME", mWords, "The automatic style, and its name from now on")->required()->expected(2);
    return command;
  }
};

class DemoteCommand : public EditCommand {
 public:
  DemoteCommand() : EditCommand("demote") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(tool, "Make named styles automatic ones; the text looks as before",
                                   "Example:\n  ztstyles demote letter.odt Quotations -o new.odt");
    command->add_option("STYLE", mWords, "The named styles that go")->required()->expected(1, 1000);
    return command;
  }
};

class ApplyCommand : public EditCommand {
 public:
  ApplyCommand() : EditCommand("apply") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(
        tool, "Let the named styles of a template take the place of those of the same name",
        "What they inherit from or refer to comes with them; default styles stay. What text looks different is told.\n"
        "Examples:\n"
        "  ztstyles apply letter.odt --from house.ott --dry-run\n"
        "  ztstyles apply letter.odt --from house.ott --add --remove-others -o new.odt");
    command->add_option("--from", mTemplate, "The document that the styles are taken from")->required();
    command->add_option("--only", mWords, "Only this style. May be given several times")->allow_extra_args(false);
    command->add_flag("--add", mAdds, "Styles that FILE lacks are taken, too");
    command->add_flag("--remove-others", mRemovesOthers, "Named styles that the template lacks go");
    return command;
  }

 private:
  [[nodiscard]] std::vector<EditLine> edits() const override {
    std::vector<std::string> words = {mName};
    if (mAdds) words.emplace_back("--add");
    if (mRemovesOthers) words.emplace_back("--remove-others");
    words.push_back(mTemplate);
    words.insert(words.end(), mWords.begin(), mWords.end());
    return {{0, std::move(words)}};
  }

  std::string mTemplate;
  bool mAdds = false;
  bool mRemovesOthers = false;
};

class ScriptCommand : public EditCommand {
 public:
  ScriptCommand() : EditCommand("edit") {}
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = addCommand(
        tool, "Make the edits of a script, all or none",
        "One edit a line: set STYLE PROPERTY=VALUE..., rename OLD NEW, merge FROM... INTO, remove STYLE...,\n"
        "reparent STYLE PARENT, promote STYLE NAME, demote STYLE..., apply TEMPLATE [STYLE...], dedupe, cleanup "
        "[KEPT...],\n"
        "with the options of the commands. Words with blanks stand in double quotes, remarks behind #.\nExample:\n  "
        "ztstyles edit letter.odt house.edits -o new.odt");
    command->add_option("SCRIPT", mScript, "The file with the edits")->required();
    return command;
  }

 private:
  [[nodiscard]] std::vector<EditLine> edits() const override {
    try {
      return editLines(ztaReadFile(mScript, std::size_t{16} << 20));
    } catch (const EditError& error) {
      throw UsageError(mScript + ": " + error.what());
    }
  }

  std::string mScript;
};

}  // namespace

std::unique_ptr<Command> makeApplyCommand() { return std::make_unique<ApplyCommand>(); }
std::unique_ptr<Command> makeDemoteCommand() { return std::make_unique<DemoteCommand>(); }
std::unique_ptr<Command> makeEditCommand() { return std::make_unique<ScriptCommand>(); }
std::unique_ptr<Command> makeMergeCommand() { return std::make_unique<MergeCommand>(); }
std::unique_ptr<Command> makePromoteCommand() { return std::make_unique<PromoteCommand>(); }
std::unique_ptr<Command> makeRemoveCommand() { return std::make_unique<RemoveCommand>(); }
std::unique_ptr<Command> makeRenameCommand() { return std::make_unique<RenameCommand>(); }
std::unique_ptr<Command> makeReparentCommand() { return std::make_unique<ReparentCommand>(); }

}  // namespace zt
