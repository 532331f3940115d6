// SPDX-License-Identifier: MIT
#include <document/archive/DocumentArchive.h>

#include <document/archive/StyleArchiving.h>
#include <document/styles/FamilyStyles.h>
#include <document/styles/StyleValues.h>

#include <archiving/ZTAValueCoder.h>
#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <support/ZTUDynamicCast.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSArchiving.h>

#include <fmt/format.h>
#include <libxml/tree.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <mutex>

namespace zt {

namespace {

/// The object at the root of an archive: the stylesheet, and what a document knows beside it.
class DocumentRoot final : public ZTAXMLCoding {
 public:
  Ref<ZTSStylesheet> stylesheet;
  std::vector<std::string> parts;  ///< their names
  std::map<std::string, std::string> fontFamilies;

  static const ZTClass& rootClass() {
    static const auto* object = new ZTClassOf<DocumentRoot>("ZTDocumentRoot", nsObjectClass());
    return *object;
  }
  const ZTClass& classObject() const override { return rootClass(); }

  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override {
    archiver.encodeObject(stylesheet.get(), node, CorvaleNamespace);
    if (version >= 2) {
      const auto set = [](xmlNode* entry, const char* name, const std::string& text) {
        ztaxmlSetNSStringNsPropOrRaise(entry, CorvaleNamespace, name, text);
      };
      for (const std::string& part : parts)
        set(ztaxmlNewNsChildNodeOrRaise(node, CorvaleNamespace, "part"), "name", part);
      for (const auto& [font, family] : fontFamilies) {
        xmlNode* entry = ztaxmlNewNsChildNodeOrRaise(node, CorvaleNamespace, "font");
        set(entry, "name", font);
        set(entry, "family", family);
      }
    }
  }

  bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t) override {
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (child->type != XML_ELEMENT_NODE) continue;
      const std::string_view name = reinterpret_cast<const char*>(child->name);
      static const auto* items = new ZTAArchivedItems{{"name", "family"}};
      if (name == "part" || name == "font") unarchiver.reportUnknown(child, items);
      if (name == "part") {
        parts.push_back(archivedText(child, "name"));
      } else if (name == "font") {
        fontFamilies[archivedText(child, "name")] = archivedText(child, "family");
      } else if (stylesheet == nullptr) {
        stylesheet =
            ZTUDynamicCast<ZTSStylesheet>(unarchiver.createObjectOfClass(ZTSStylesheet::stylesheetClass(), child));
      } else {
        unarchiver.report(child, "a document has one stylesheet; this element is passed over");
      }
    }
    if (stylesheet == nullptr) unarchiver.raise(node, "expected a stylesheet in the document, found none");
    return true;
  }

  const ZTAArchivedItems* archivedItems() const override {
    static const auto* items = new ZTAArchivedItems{{}, {"stylesheet"}, {"part", "font"}};
    return items;
  }

  void preArchiveDowngradeForVersion(std::uint64_t version, ZTAXMLArchiver& archiver) override {
    stylesheet->preArchiveDowngradeForVersion(version, archiver);
  }
};

void registerCoders() {
  for (const ValueKind& kind : valueKinds()) {
    if (kind.valueClass == nullptr) continue;
    ztaxmlRegisterTextCoding(kind.valueClass(), std::string(kind.name).c_str(), kind.text, kind.read);
  }
}

/// Property elements in the order of their names, while it lives.
class SortedProperties {
 public:
  explicit SortedProperties(bool sorted) : mBefore(ZTSStyle::sortXMLPropertiesByKey()) {
    ZTSStyle::setSortXMLPropertiesByKey(sorted);
  }
  SortedProperties(const SortedProperties&) = delete;
  SortedProperties& operator=(const SortedProperties&) = delete;
  ~SortedProperties() { ZTSStyle::setSortXMLPropertiesByKey(mBefore); }

 private:
  bool mBefore;
};

Ref<ZTAXMLArchiver> archived(ZTDocument& document, const ArchiveOptions& options) {
  setUpArchives();
  auto root = make<DocumentRoot>();
  root->stylesheet = &document.stylesheet();
  for (const ZTDocument::Part& part : document.parts) root->parts.push_back(part.name);
  root->fontFamilies.insert(document.fontFamilies.begin(), document.fontFamilies.end());
  auto archiver = make<ZTAXMLArchiver>(options.version, kArchiveVersion);
  const ZTADiffableXmlScope diffable(options.isDiffable);
  const SortedProperties sorted(options.isDiffable);
  archiver->encodeRootObject(*root);
  return archiver;
}

Ref<ZTDocument> documentFrom(ZTAXMLUnarchiver& unarchiver, const std::string& path) {
  auto origins = make<ArchivedOrigins>();
  unarchiver.setMetadataForKey(origins, kArchivedOrigins);
  const Ref<NSObject> object = unarchiver.unarchiveRootObject();
  auto* root = ZTUDynamicCast<DocumentRoot>(object.get());
  Ref<ZTSStylesheet> stylesheet =
      root != nullptr ? root->stylesheet : Ref<ZTSStylesheet>(ZTUDynamicCast<ZTSStylesheet>(object.get()));
  if (stylesheet == nullptr) throw ReadError({path, 0}, "expected a document or a stylesheet in the archive");

  Ref<ZTDocument> document = ZTDocument::withStylesheet(std::move(stylesheet));
  document->shown = path;
  if (root != nullptr) {
    for (const std::string& part : root->parts) document->parts.push_back({part, fmt::format("{}:{}", path, part)});
    document->fontFamilies.insert(root->fontFamilies.begin(), root->fontFamilies.end());
  }
  // In the order of the document that they came from, as far as the archive tells it.
  auto& read = origins->value;
  std::stable_sort(read.begin(), read.end(), [](const auto& left, const auto& right) {
    return std::pair(left.second.part, left.second.line) < std::pair(right.second.part, right.second.line);
  });
  std::vector<std::pair<Ref<OdfStyle>, std::size_t>> uses;
  for (auto& [style, origin] : read) {
    if (style->stylesheet() == nullptr) continue;  // the archive's stylesheets did not keep it
    uses.emplace_back(style, std::exchange(origin.uses, 0));
    document->recordOrigin(style, std::move(origin));
  }
  document->undoManager()->disableUndoRegistration();
  for (const auto& [style, count] : uses) document->countUses(*style, count);
  document->undoManager()->enableUndoRegistration();
  for (const Ref<ZTAError>& error : unarchiver.findings()) {
    document->findings.push_back(
        {Finding::Severity::warning, "archive", {path, static_cast<int>(error->line())}, "", error->message()});
  }
  return document;
}

/// What `open` gives, with exceptions of the library as errors of reading. Its log says what the findings say.
template <class Open>
Ref<ZTDocument> reading(const std::string& path, bool isDiffable, Open open) {
  setUpArchives();
  const ZTADiffableXmlScope diffable(isDiffable);
  ZTULogRecorder quiet;
  try {
    const Ref<ZTAXMLUnarchiver> unarchiver = open();
    return documentFrom(*unarchiver, path);
  } catch (const ZTAArchiveException& exception) {
    throw ReadError({path, static_cast<int>(exception.error()->line())}, exception.error()->message());
  } catch (const NSException& exception) {
    throw ReadError({path, 0}, exception.reason());
  }
}

}  // namespace

void setUpArchives() {
  static std::once_flag once;
  std::call_once(once, [] {
    ZTSInitArchivingClassToElementNameMappings();
    ztaxmlRegisterClassNamePair(DocumentRoot::rootClass(), "document");
    for (const StyleFamily family : kStyleFamilies) {
      ztaxmlRegisterClassNamePair(familyStyleClass(family), (std::string(familyName(family)) + "-style").c_str());
    }
    registerCoders();
    ZTSStylesheet::registerUpgrader(make<ArchiveUpgrader>());
    ZTSStylesheet::registerDowngrader(make<ArchiveDowngrader>());
  });
}

ZTACompression compressionForName(std::string_view path) {
  return path.ends_with(".gz") ? ZTACompression::gzip : ZTACompression::none;
}

std::string archiveBytes(ZTDocument& document, const ArchiveOptions& options) {
  return archived(document, options)->bytes(options.compression);
}

void saveArchive(ZTDocument& document, const std::string& path, const ArchiveOptions& options) {
  archived(document, options)->writeToFile(path, options.compression);
}

bool isArchive(const std::filesystem::path& path) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return false;
  std::string beginning(1 << 16, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
  return ZTAXMLUnarchiver::looksLikeArchive(
      std::string_view(beginning).substr(0, static_cast<std::size_t>(file.gcount())));
}

Ref<ZTDocument> readArchive(const std::filesystem::path& path, bool isDiffable) {
  return reading(path.string(), isDiffable, [&] {
    return ZTAXMLUnarchiver::unarchiverForFile(path.string(), {.newestVersion = kArchiveVersion});
  });
}

Ref<ZTDocument> readArchiveBytes(std::string bytes, const std::string& shown, bool isDiffable) {
  return reading(shown, isDiffable, [&] {
    return ZTAXMLUnarchiver::unarchiverForBytes(std::move(bytes),
                                                {.fileName = shown, .newestVersion = kArchiveVersion});
  });
}

const DocumentFormat& archiveFormat() {
  class Archives final : public DocumentFormat {
   public:
    [[nodiscard]] std::string_view name() const override { return "archive"; }
    [[nodiscard]] bool recognises(const std::filesystem::path& path) const override { return isArchive(path); }
    [[nodiscard]] Ref<ZTDocument> read(const std::filesystem::path& path) const override { return readArchive(path); }
  };
  static const Archives archives;
  return archives;
}

}  // namespace zt
