// SPDX-License-Identifier: MIT
#include <opendocument/writing/EditableOpenDocument.h>

#include <opendocument/reading/StyleImporter.h>
#include <opendocument/writing/PartWriter.h>

#include <fstream>

namespace zt {

namespace {

namespace fs = std::filesystem;

Ref<ZTDocument> documentOf(Package package) { return importStyles(RawDocument::read(std::move(package))); }

std::string beginningOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(4096, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  std::erase(bytes, '\0');  // so that UTF-16 is recognised too
  return bytes;
}

}  // namespace

EditableOpenDocument::EditableOpenDocument(Package package, DocumentSource source)
    : EditableDocument(std::move(source), documentOf(std::move(package))), mFonts(document().declaredFonts()) {}

std::unique_ptr<EditableDocument> EditableOpenDocument::open(const fs::path& path) {
  Package package = Package::read(path);
  DocumentSource source = package.kind() == DocumentForm::package
                              ? DocumentSource::package(path, package.parts())
                              : DocumentSource{path, package.kind(), {}, package.parts()};
  return std::unique_ptr<EditableDocument>(new EditableOpenDocument(std::move(package), std::move(source)));
}

std::unique_ptr<EditableDocument> EditableOpenDocument::fromFlatText(std::string bytes, const std::string& shown) {
  Package package = Package::fromFlatText(std::move(bytes), shown);
  DocumentSource source{shown, DocumentForm::flat, {}, package.parts()};
  return std::unique_ptr<EditableDocument>(new EditableOpenDocument(std::move(package), std::move(source)));
}

std::vector<XmlPart> EditableOpenDocument::written(std::vector<ShownEdit>& shown) {
  mDifference.emplace(document(), before(), mFonts);
  std::vector<XmlPart> parts;
  for (std::size_t index = 0; index < source().parts.size(); ++index) {
    const XmlPart& part = source().parts[index];
    const bool isSame = mDifference->parts()[index].isEmpty();
    parts.push_back({part.name, part.shown, isSame ? part.bytes : writtenPart(part, index, *mDifference, shown)});
  }
  return parts;
}

Ref<ZTDocument> EditableOpenDocument::readAgain(std::vector<XmlPart> parts) const {
  return documentOf(Package::fromParts(source().form, std::move(parts), document().shown));
}

const OdfStyle* EditableOpenDocument::styleOfUse(std::size_t use, const ZTDocument& again) const {
  const StyleUse& before = document().styleUses()[use];
  return again.referredStyle(before.part, before.family, mDifference->nameOfUse(use));
}

bool EditableOpenDocument::isReplaceable(const fs::path& path) const {
  if (source().form == DocumentForm::folder)
    return fs::is_directory(path) && (fs::exists(path / "styles.xml") || fs::exists(path / "content.xml"));
  if (!fs::is_regular_file(path)) return false;
  const std::string beginning = beginningOf(path);
  if (source().form == DocumentForm::package)
    return beginning.starts_with("PK") && beginning.find("application/vnd.oasis.opendocument") != std::string::npos;
  return beginning.find("<office:document") != std::string::npos ||
         (beginning.find("urn:oasis:names:tc:opendocument:xmlns:office:1.0") != std::string::npos &&
          beginning.find('<') < 4);
}

bool EditableOpenDocument::isSignature(std::string_view entry) const {
  return entry.starts_with("META-INF/") && entry.find("signatures") != std::string_view::npos;
}

}  // namespace zt
