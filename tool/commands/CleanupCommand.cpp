// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>
#include <insight/validation/FindingsJson.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/commands/WriteOptions.h>
#include <tool/console/Report.h>

#include <fmt/format.h>

#include <map>
#include <ostream>

namespace zt {

namespace {

class CleanupCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command =
        tool.add_subcommand("cleanup", "Remove the styles that nothing in the document uses, or list them");
    command->add_option("FILE", mFile, "The document, or an archive")->required();
    mOptions.addTo(*command,
                   "Write the document without them; an archive of the styles that are left if OUT ends in .zts "
                   "(.zts.gz: packed)");
    command->add_flag("--keep-named", mKeepsNamed, "Only automatic styles and list levels go");
    command->add_flag("--fonts", mCleansFonts, "In a document that is written, unused declarations of fonts go, too");
    command->add_option("--keep", mKept, "A style that stays. May be given several times")->allow_extra_args(false);
    command->add_flag(
        "--latent", mTrimsLatent,
        "The list of latent styles of WordprocessingML keeps no style, and loses those that are not there");
    command->add_flag("--json", mAsJson, "Write one JSON object: what is removed, how many are left");
    command->footer(
        "A style is used if the text names it, or a used style inherits from it or refers to it. The outline, default "
        "styles, "
        "Standard\nand what used styles name as the next style or in conditions stay.\n"
        "Examples:\n"
        "  ztstyles cleanup letter.odt\n"
        "  ztstyles cleanup letter.odt -o small.odt\n"
        "  ztstyles cleanup letter.odt -o small.zts && ztstyles tree small.zts\n"
        "  ztstyles cleanup --keep-named --json letter.fodt | jq .removed[].style");
    return command;
  }

  ExitCode run(const Console& console) override {
    const std::unique_ptr<EditableDocument> editable = mOptions.concernDocument() ? openForEditing(mFile) : nullptr;
    const Ref<ZTDocument> document = editable ? Ref<ZTDocument>(&editable->document()) : readDocument(mFile);
    const std::size_t before = document->stylesheet().styles().count();
    std::vector<Ref<OdfStyle>> removed;
    std::vector<std::string> fonts;
    DocumentEditor plain(*document, editingRulesOf(mFile));
    DocumentEditor& editor = editable ? editable->editor() : plain;
    document->undoManager()->performInGroup([&] {
      removed = editor.cleanup(
          {.keepsNamed = mKeepsNamed, .trimsLatent = mTrimsLatent, .kept = {mKept.begin(), mKept.end()}});
      if (mCleansFonts) fonts = editor.cleanupFonts();
    });
    if (!editable && !mOptions.out().empty()) {
      refuseArchive(*document, mOptions.out(), mOptions.isForced());
      saveArchive(*document, mOptions.out(), {.compression = compressionForName(mOptions.out())});
    }
    if (editable && !mOptions.areDry()) mOptions.finish(*editable, mFile, console);
    if (mAsJson) {
      printJson(asJson(*document, before, removed, fonts), console);
    } else {
      print(*document, before, removed, fonts, console);
    }
    if (editable && !mAsJson && mOptions.areDry()) mOptions.finish(*editable, mFile, console);
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  void print(const ZTDocument& document, std::size_t before, const std::vector<Ref<OdfStyle>>& removed,
             const std::vector<std::string>& fonts, const Console& console) const {
    std::map<std::string, std::size_t> byFamily;
    for (const Ref<OdfStyle>& style : removed) {
      ++byFamily[style->familyName()];
      console.out << document.labelOf(*style) << console.faint("  " + document.placeOf(*style).text()) << '\n';
    }
    if (!removed.empty()) console.out << '\n';
    for (const auto& [family, count] : byFamily) console.out << fmt::format("{:<20} {:>8}\n", family, count);
    console.out << fmt::format("{} of {} styles are used by nothing\n", removed.size(), before);
    if (mCleansFonts) console.out << fmt::format("{} declarations of fonts are used by nothing\n", fonts.size());
  }

  [[nodiscard]] nlohmann::ordered_json asJson(const ZTDocument& document, std::size_t before,
                                              const std::vector<Ref<OdfStyle>>& removed,
                                              const std::vector<std::string>& fonts) const {
    nlohmann::ordered_json json{{"document", document.shown}, {"before", before}, {"left", before - removed.size()}};
    json["removed"] = nlohmann::ordered_json::array();
    for (const Ref<OdfStyle>& style : removed) {
      json["removed"].push_back({{"style", document.labelOf(*style)},
                                 {"family", style->familyName()},
                                 {"place", document.placeOf(*style).text()}});
    }
    if (mCleansFonts) json["fonts"] = fonts;
    json["findings"] = findingsAsJson(document.findings);
    return json;
  }

  std::string mFile;
  WriteOptions mOptions;
  bool mTrimsLatent = false;
  std::vector<std::string> mKept;
  bool mKeepsNamed = false;
  bool mCleansFonts = false;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeCleanupCommand() { return std::make_unique<CleanupCommand>(); }

}  // namespace zt
