// SPDX-License-Identifier: MIT
#include <wordprocessing/package/WordPackage.h>

#include <document/xml/SafeXml.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <unordered_map>
#include <utility>

namespace zt {

namespace {

constexpr std::string_view kTransitional = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
constexpr std::string_view kStrict = "http://purl.oclc.org/ooxml/officeDocument/relationships/";
constexpr std::size_t kTypesBytes = std::size_t{4} << 20;

struct Relationship {
  std::string type;  // the last step of its address, empty for one that is not of an office document
  std::string target;
};

class RelationshipReader : public XmlHandler {
 public:
  std::vector<Relationship> found;

  void startElement(const XmlElement& element) override {
    if (!element.is("rel", "Relationship") || element.attribute("none", "TargetMode") == "External") return;
    const std::string_view type = element.attribute("none", "Type").value_or("");
    for (const std::string_view start : {kTransitional, kStrict}) {
      if (!type.starts_with(start)) continue;
      found.push_back(
          {std::string(type.substr(start.size())), std::string(element.attribute("none", "Target").value_or(""))});
    }
  }
  void endElement() override {}
};

/// What the package says its parts are ([Content_Types].xml, ECMA-376 part 2, 10.1.2.2).
class TypesReader : public XmlHandler {
 public:
  void startElement(const XmlElement& element) override {
    const std::string type(element.attribute("none", "ContentType").value_or(""));
    if (element.name == "Override") {
      std::string_view name = element.attribute("none", "PartName").value_or("");
      if (name.starts_with('/')) name.remove_prefix(1);
      mByName.try_emplace(std::string(name), type);
    } else if (element.name == "Default") {
      mByExtension.try_emplace(std::string(element.attribute("none", "Extension").value_or("")), type);
    }
  }
  void endElement() override {}

  /// Empty where nothing is said.
  [[nodiscard]] std::string typeOf(const std::string& part) const {
    if (const auto found = mByName.find(part); found != mByName.end()) return found->second;
    const std::size_t dot = part.rfind('.');
    const auto found = mByExtension.find(dot == std::string::npos ? std::string() : part.substr(dot + 1));
    return found != mByExtension.end() ? found->second : std::string();
  }

 private:
  std::unordered_map<std::string, std::string> mByName;
  std::unordered_map<std::string, std::string> mByExtension;
};

// "application/xml" says no more than that it can be read.
bool mayBe(WordPartKind kind, std::string_view type) {
  if (type.empty() || type.ends_with("/xml")) return true;
  switch (kind) {
    case WordPartKind::styles: return type.ends_with("styles+xml");
    case WordPartKind::numbering: return type.ends_with("numbering+xml");
    case WordPartKind::theme: return type.ends_with("theme+xml");
    case WordPartKind::settings: return type.ends_with("settings+xml");
    case WordPartKind::document:
    case WordPartKind::text: return type.ends_with("+xml");
  }
  return true;
}

// The encryption of office documents wraps the package into a compound file, as the binary formats before it were.
bool startsLikeCompoundFile(const std::filesystem::path& path) {
  constexpr std::string_view kMark = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
  std::array<char, 8> mark = {};
  std::ifstream file(path, std::ios::binary);
  return file.read(mark.data(), mark.size()) && std::string_view(mark.data(), mark.size()) == kMark;
}

std::optional<WordPartKind> kindOf(std::string_view type) {
  if (type == "styles") return WordPartKind::styles;
  if (type == "numbering") return WordPartKind::numbering;
  if (type == "theme") return WordPartKind::theme;
  if (type == "settings") return WordPartKind::settings;
  for (const std::string_view text : {"header", "footer", "footnotes", "endnotes", "comments"}) {
    if (type == text) return WordPartKind::text;
  }
  return std::nullopt;
}

std::string relationshipsOf(const std::string& part) {
  const std::size_t slash = part.rfind('/');
  const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
  return part.substr(0, name) + "_rels/" + part.substr(name) + ".rels";
}

class PackageReader {
 public:
  PackageReader(const std::filesystem::path& path, const PackageLimits& limits) : mZip(path, limits), mLimits(limits) {}

  WordPackage read() {
    mPackage.shown = mZip.shown();
    readEntry("[Content_Types].xml", mTypes);
    const std::string main = mainPart();
    add(WordPartKind::document, main);
    if (mPackage.parts.empty()) refuse(main);
    for (const Relationship& relationship : relationships(relationshipsOf(main))) {
      if (const auto kind = kindOf(relationship.type)) addTarget(*kind, main, relationship);
      if (relationship.type == "glossaryDocument" && !hasOwnStyles(resolvedTarget(main, relationship.target)))
        addTarget(WordPartKind::text, main, relationship);
    }
    std::stable_sort(mPackage.parts.begin(), mPackage.parts.end(),
                     [](const auto& left, const auto& right) { return left.kind < right.kind; });
    return std::move(mPackage);
  }

 private:
  std::string mainPart() {
    for (const Relationship& relationship : relationships("_rels/.rels")) {
      if (relationship.type != "officeDocument") continue;
      if (std::string name = resolvedTarget("", relationship.target); !name.empty()) return name;
    }
    tell("missing-relationship", mZip.shown(), "no relationship leads to the main part; word/document.xml is taken");
    return "word/document.xml";
  }

  std::vector<Relationship> relationships(const std::string& name) {
    RelationshipReader reader;
    readEntry(name, reader);
    return std::move(reader.found);
  }

  void readEntry(const std::string& name, XmlHandler& handler) {
    try {
      auto bytes = mZip.entry(name, mLimits.manifestBytes);
      if (bytes) readXml({name, mZip.shownEntry(name), std::move(*bytes)}, handler, mPackage.findings);
    } catch (const ReadError& error) {
      passOver(error, "; kept what stands before");
    }
  }

  bool hasOwnStyles(const std::string& part) {
    const std::vector<Relationship> all = relationships(relationshipsOf(part));
    return std::any_of(all.begin(), all.end(), [](const Relationship& each) { return each.type == "styles"; });
  }

  void addTarget(WordPartKind kind, const std::string& from, const Relationship& relationship) {
    const std::string name = resolvedTarget(from, relationship.target);
    if (name.empty()) {
      tell("missing-part", mZip.shownEntry(from),
           fmt::format("the target '{:.60}' leads out of the package; left out", relationship.target));
    } else if (!isTaken(kind, name)) {
      add(kind, name);
    }
  }

  // A part that several relationships name is read once, and of styles, numbering and theme there is one each.
  [[nodiscard]] bool isTaken(WordPartKind kind, const std::string& name) const {
    return std::any_of(mPackage.parts.begin(), mPackage.parts.end(), [&](const WordPackage::Part& part) {
      return part.xml.name == name || (kind == part.kind && kind != WordPartKind::text);
    });
  }

  void add(WordPartKind kind, const std::string& name) {
    try {
      if (auto bytes = mZip.entry(name, mLimits.partBytes)) {
        if (const std::string type = mTypes.typeOf(name); !mayBe(kind, type)) {
          tell("wrong-content-type", mZip.shownEntry(name),
               fmt::format("is said to be of the type {:.100}; read as its relationship says", type));
        }
        mPackage.parts.push_back({kind, {name, mZip.shownEntry(name), std::move(*bytes)}});
      } else {
        tell("missing-part", mZip.shownEntry(name), "a relationship leads to this part, which is not there");
      }
    } catch (const ReadError& error) {
      passOver(error, "; left out");
    }
  }

  [[noreturn]] void refuse(const std::string& main) const {
    for (const Finding& finding : mPackage.findings) {
      if (finding.severity == Finding::Severity::error) throw ReadError(finding.place, finding.message);
    }
    throw ReadError({mZip.shown()}, fmt::format("holds no main part ({:.60})", main));
  }

  void tell(const char* code, const std::string& file, const std::string& message) {
    mPackage.findings.push_back({Finding::Severity::warning, code, {file}, {}, message});
  }

  void passOver(const ReadError& error, const char* outcome) {
    mPackage.findings.push_back(
        {Finding::Severity::error, "unreadable-part", error.place(), {}, error.message() + outcome});
  }

  ZipReader mZip;
  PackageLimits mLimits;
  TypesReader mTypes;
  WordPackage mPackage;
};

}  // namespace

std::string resolvedTarget(std::string_view from, std::string_view target) {
  std::vector<std::string_view> steps;
  // Whether all steps of the path lead somewhere inside.
  const auto walk = [&steps](std::string_view path) {
    while (!path.empty()) {
      const std::string_view step = path.substr(0, path.find('/'));
      path.remove_prefix(std::min(path.size(), step.size() + 1));
      if (step.empty() || step == ".") continue;
      if (step != "..") {
        steps.push_back(step);
      } else if (steps.empty()) {
        return false;
      } else {
        steps.pop_back();
      }
    }
    return true;
  };
  const std::size_t slash = from.rfind('/');
  if (!target.starts_with('/') && slash != std::string_view::npos) walk(from.substr(0, slash));
  if (target.find(':') != std::string_view::npos || !walk(target)) return {};
  return fmt::format("{}", fmt::join(steps, "/"));
}

bool WordPackage::recognises(const std::filesystem::path& path) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return false;
  if (startsLikeCompoundFile(path)) return true;
  if (!ZipReader::recognises(path)) return false;
  try {
    const auto types = ZipReader(path).entry("[Content_Types].xml", kTypesBytes);
    return types &&
           (types->find("wordprocessingml.") != std::string::npos || types->find("ms-word.") != std::string::npos);
  } catch (const ReadError&) {
    return false;
  }
}

WordPackage WordPackage::read(const std::filesystem::path& path, const PackageLimits& limits) {
  if (startsLikeCompoundFile(path)) {
    throw ReadError({path.string()}, "encrypted, or of a binary format; save it as .docx without a password first");
  }
  return PackageReader(path, limits).read();
}

}  // namespace zt
