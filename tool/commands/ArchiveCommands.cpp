// SPDX-License-Identifier: MIT

// The commands that write and compare archives: convert, normalize, diff.

#include <document/archive/DocumentArchive.h>
#include <insight/difference/DocumentDiff.h>
#include <tool/Formats.h>
#include <tool/commands/Commands.h>
#include <tool/commands/WriteOptions.h>
#include <tool/console/Report.h>

#include <ostream>

namespace zt {

namespace {

class ConvertCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("convert", "Write the styles of a document as an archive");
    command->add_option("IN", mIn, "The document, or an archive")->required();
    command->add_option("OUT", mOut, "The archive; replaced in one step where it exists")->required();
    command->add_flag("--force", mIsForced, "OUT may be something that is no archive");
    command->add_flag("--gzip", mIsCompressed, "Compress it; so does a name that ends in .gz");
    command->add_option("--format", mVersion, "The version of the archive, for older readers")->check(CLI::Range(1, 2));
    command->footer(
        "Examples:\n"
        "  ztstyles convert letter.odt letter.zts\n"
        "  ztstyles convert letter.odt letter.zts.gz\n"
        "  ztstyles convert --format 1 letter.zts old.zts");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = readDocument(mIn);
    refuseArchive(*document, mOut, mIsForced);
    saveArchive(*document, mOut,
                {.version = mVersion, .compression = mIsCompressed ? ZTACompression::gzip : compressionForName(mOut)});
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  std::string mIn;
  std::string mOut;
  bool mIsForced = false;
  bool mIsCompressed = false;
  std::uint64_t mVersion = kArchiveVersion;
};

class NormalizeCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("normalize", "Write an archive in an order that compares well as text");
    command->add_option("FILE", mFile, "The document, or an archive")->required();
    command->add_option("--out", mOut, "Where to; the output without it");
    command->add_flag("--force", mIsForced, "OUT may be something that is no archive");
    command->footer(
        "Styles stand by depth and identifier, properties by name, and nothing depends on lines of the original.\n"
        "Examples:\n"
        "  diff <(ztstyles normalize a.odt) <(ztstyles normalize b.odt)\n"
        "  ztstyles normalize letter.zts --out letter.zts");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> document = isArchive(mFile) ? readArchive(mFile, true) : readDocument(mFile);
    if (mOut.empty()) {
      console.out << archiveBytes(*document, {.isDiffable = true});
    } else {
      refuseArchive(*document, mOut, mIsForced);
      saveArchive(*document, mOut, {.isDiffable = true});
    }
    printFindings(document->findings, console);
    return codeFor(document->findings);
  }

 private:
  std::string mFile;
  std::string mOut;
  bool mIsForced = false;
};

class DiffCommand : public Command {
 public:
  CLI::App* addTo(CLI::App& tool) override {
    CLI::App* command = tool.add_subcommand("diff", "Say which styles two documents add, remove and change");
    command->add_option("A", mBefore, "A document, or an archive")->required();
    command->add_option("B", mAfter, "Another")->required();
    command->add_flag("--json", mAsJson, "Write one JSON object with added, removed and changed styles");
    command->footer(
        "Leaves with 1 where they differ.\n"
        "Examples:\n"
        "  ztstyles diff old.odt new.odt\n"
        "  ztstyles diff --json letter.odt letter.zts | jq '.changed[].style'");
    return command;
  }

  ExitCode run(const Console& console) override {
    const Ref<ZTDocument> before = readDocument(mBefore);
    const Ref<ZTDocument> after = readDocument(mAfter);
    const DocumentDiff diff(*before, *after);
    if (mAsJson) {
      printJson(diff.asJson(), console);
    } else {
      console.out << diff.text();
    }
    printFindings(before->findings, console);
    printFindings(after->findings, console);
    return diff.isEmpty() ? ExitCode::done : ExitCode::findings;
  }

 private:
  std::string mBefore;
  std::string mAfter;
  bool mAsJson = false;
};

}  // namespace

std::unique_ptr<Command> makeConvertCommand() { return std::make_unique<ConvertCommand>(); }
std::unique_ptr<Command> makeNormalizeCommand() { return std::make_unique<NormalizeCommand>(); }
std::unique_ptr<Command> makeDiffCommand() { return std::make_unique<DiffCommand>(); }

}  // namespace zt
