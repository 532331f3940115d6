// SPDX-License-Identifier: MIT

// The page about editing shows command lines with what they print: each is run, one after the other.

#include <tests/Files.h>
#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

namespace {

using namespace zt::test;

/// The words of a command line; quotes keep blanks together.
std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words(1);
  bool isQuoted = false;
  for (const char byte : line) {
    if (byte == '"') {
      isQuoted = !isQuoted;
    } else if (byte == ' ' && !isQuoted) {
      words.emplace_back();
    } else {
      words.back() += byte;
    }
  }
  return words;
}

struct Example {
  std::string command;
  std::string output;
};

std::vector<Example> examplesOf(const std::string& page) {
  std::vector<Example> examples;
  std::istringstream lines(page);
  const std::string indent = "    ";
  bool isInside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(indent + "$ ztstyles ")) {
      examples.push_back({line.substr(indent.size() + 11), {}});
      isInside = true;
    } else if (line.starts_with(indent) && isInside) {
      examples.back().output += line.substr(indent.size()) + '\n';
    } else {
      isInside = false;
    }
  }
  return examples;
}

TEST(EditingPageTest, WhatThePageShowsIsWhatTheToolPrints) {
  const TemporaryFolder folder;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder / "");
  std::filesystem::copy(dataPath("03-small-invoice.fodt"), "invoice.fodt");
  std::filesystem::copy(dataPath("06-medium-letter-template"), "letter", std::filesystem::copy_options::recursive);
  const std::string page = contentOf((std::filesystem::path(ZT_TEST_DATA_DIR) / "../../docs/editing.md").string());
  const std::vector<Example> examples = examplesOf(page);
  EXPECT_GE(examples.size(), 6U);
  for (const Example& example : examples) {
    const ToolRun run = runTool(wordsOf(example.command));
    EXPECT_EQ(run.out + run.err, example.output) << example.command;
  }
  std::filesystem::current_path(before);
}

}  // namespace
