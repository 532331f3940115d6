// SPDX-License-Identifier: MIT
#include <document/editing/EditScript.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

bool isBlank(char byte) { return byte == ' ' || byte == '\t' || byte == '\r'; }

std::vector<std::string> wordsOf(std::string_view line) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < line.size();) {
    if (isBlank(line[at])) {
      ++at;
      continue;
    }
    if (line[at] == '#') break;
    std::string word;
    bool isQuoted = false;
    for (; at < line.size() && (isQuoted || !isBlank(line[at])); ++at) {
      if (line[at] != '"') {
        word += line[at];
      } else if (isQuoted && at + 1 < line.size() && line[at + 1] == '"') {
        word += line[++at];
      } else {
        isQuoted = !isQuoted;
      }
    }
    if (isQuoted) throw EditError("a quote does not end");
    words.push_back(std::move(word));
  }
  return words;
}

/// Takes an option out of the words; whether it was there.
bool takeOption(std::vector<std::string>& words, std::string_view option) { return std::erase(words, option) != 0; }

void require(const std::vector<std::string>& words, std::size_t least, std::size_t most, const char* form) {
  if (words.size() < least || words.size() > most) throw EditError(fmt::format("the form is: {}", form));
}

}  // namespace

std::vector<EditLine> editLines(std::string_view script) {
  std::vector<EditLine> lines;
  std::size_t number = 0;
  for (std::size_t at = 0; at < script.size();) {
    const std::size_t end = std::min(script.find('\n', at), script.size());
    ++number;
    try {
      std::vector<std::string> words = wordsOf(script.substr(at, end - at));
      if (!words.empty()) lines.push_back({number, std::move(words)});
    } catch (const EditError& error) {
      throw EditError(fmt::format("line {}: {}", number, error.what()));
    }
    at = end + 1;
  }
  return lines;
}

void performEdit(DocumentEditor& editor, const std::vector<std::string>& given, const TemplateReader& readTemplate) {
  constexpr std::size_t kAny = static_cast<std::size_t>(-1);
  std::vector<std::string> words = given;
  if (words.empty()) throw EditError("nothing to do");
  const std::string edit = words.front();
  words.erase(words.begin());
  const auto takeKeepLook = [&] { return takeOption(words, "--keep-look") ? KeepLook::yes : KeepLook::no; };
  if (edit == "set") {
    const KeepLook keepLook = takeKeepLook();
    require(words, 2, kAny, "set [--keep-look] STYLE PROPERTY=VALUE...");
    OdfStyle& style = editor.style(words.front());
    std::vector<DocumentEditor::Assignment> assignments;
    for (std::size_t index = 1; index < words.size(); ++index)
      assignments.push_back(editor.assignment(style, words[index]));
    editor.set(style, assignments, keepLook);
  } else if (edit == "rename") {
    require(words, 2, 2, "rename OLD NEW");
    editor.rename(editor.style(words[0]), words[1]);
  } else if (edit == "reparent") {
    const KeepLook keepLook = takeKeepLook();
    require(words, 2, 2, "reparent [--keep-look] STYLE PARENT");
    editor.reparent(editor.style(words[0]), &editor.style(words[1]), keepLook);
  } else if (edit == "merge") {
    require(words, 2, kAny, "merge FROM... INTO");
    for (std::size_t index = 0; index + 1 < words.size(); ++index)
      editor.merge(editor.style(words[index]), editor.style(words.back()));
  } else if (edit == "remove") {
    const KeepLook keepLook = takeKeepLook();
    require(words, 1, kAny, "remove [--keep-look] STYLE...");
    for (const std::string& word : words) editor.remove(editor.style(word), keepLook);
  } else if (edit == "dedupe") {
    const bool ignoresRevisionMarks = takeOption(words, "--ignore-revision-marks");
    const bool mergesLists = takeOption(words, "--lists");
    require(words, 0, 0, "dedupe [--ignore-revision-marks] [--lists]");
    (void)editor.dedupe({.ignoresRevisionMarks = ignoresRevisionMarks, .mergesLists = mergesLists});
  } else if (edit == "cleanup") {
    const bool keepsNamed = takeOption(words, "--keep-named");
    (void)editor.cleanup({.keepsNamed = keepsNamed, .kept = {words.begin(), words.end()}});
  } else if (edit == "promote") {
    require(words, 2, 2, "promote STYLE NAME");
    (void)editor.promote(editor.style(words[0]), words[1]);
  } else if (edit == "demote") {
    require(words, 1, kAny, "demote STYLE...");
    for (const std::string& word : words) editor.demote(editor.style(word));
  } else if (edit == "apply") {
    const bool adds = takeOption(words, "--add");
    const bool removesOthers = takeOption(words, "--remove-others");
    require(words, 1, kAny, "apply [--add] [--remove-others] TEMPLATE [STYLE...]");
    (void)editor.apply(*readTemplate(words.front()),
                       {.only = {words.begin() + 1, words.end()}, .adds = adds, .removesOthers = removesOthers});
  } else {
    throw EditError(fmt::format("there is no edit '{}'", edit));
  }
}

void performEdits(DocumentEditor& editor, const std::vector<EditLine>& lines, const TemplateReader& readTemplate) {
  for (const EditLine& line : lines) {
    try {
      performEdit(editor, line.words, readTemplate);
    } catch (const EditError& error) {
      throw EditError(fmt::format("line {}: {}", line.line, error.what()));
    }
  }
}

}  // namespace zt
