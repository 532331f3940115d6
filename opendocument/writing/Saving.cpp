// SPDX-License-Identifier: MIT

// Where a document goes: what must not be overwritten, and how each form takes its place in one step.

#include <opendocument/writing/EditableDocument.h>

#include <archiving/ZTAArchiveFile.h>
#include <document/package/ZipRewriter.h>

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <fstream>

namespace zt {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{2} << 30;
constexpr std::string_view kSignatures = "META-INF/documentsignatures.xml";

bool isSignature(std::string_view name) {
  return name.starts_with("META-INF/") && name.find("signatures") != std::string_view::npos;
}

std::string beginningOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(4096, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  std::erase(bytes, '\0');  // so that UTF-16 is recognised too
  return bytes;
}

/// Whether what is there is a document of this form, and may be replaced by another.
bool isOfKind(const fs::path& path, Package::Kind kind) {
  if (kind == Package::Kind::folder)
    return fs::is_directory(path) && (fs::exists(path / "styles.xml") || fs::exists(path / "content.xml"));
  if (!fs::is_regular_file(path)) return false;
  const std::string beginning = beginningOf(path);
  if (kind == Package::Kind::package)
    return beginning.starts_with("PK") && beginning.find("application/vnd.oasis.opendocument") != std::string::npos;
  return beginning.find("<office:document") != std::string::npos ||
         (beginning.find("urn:oasis:names:tc:opendocument:xmlns:office:1.0") != std::string::npos &&
          beginning.find('<') < 4);
}

void saveFile(const fs::path& path, std::string_view bytes) {
  ZTAAtomicFile file(path.string());
  file.write(bytes);
  file.commit();
}

}  // namespace

std::unique_ptr<EditableDocument> EditableDocument::open(const fs::path& path) {
  Package package = Package::read(path);
  std::string container;
  if (package.kind() == Package::Kind::package) {
    container = ztaReadFile(path.string(), kLargestFile);
    // Read twice: it must not have changed on the way.
    for (const XmlPart& part : package.parts()) {
      if (zipEntry(container, part.name, path.string()) != part.bytes)
        throw ReadError({path.string()}, "changed while it was read");
    }
  }
  return std::unique_ptr<EditableDocument>(new EditableDocument(std::move(package), std::move(container)));
}

bool EditableDocument::isSigned() const {
  if (mKind == Package::Kind::folder) return fs::exists(mPath / kSignatures);
  if (mKind == Package::Kind::flat) return false;
  const std::vector<std::string> names = zipEntryNames(mContainer, mPath.string());
  return std::any_of(names.begin(), names.end(), isSignature);
}

void EditableDocument::refuseTarget(const SaveOptions& options) const {
  std::error_code ignored;
  if (!fs::exists(options.out, ignored)) return;
  if (fs::equivalent(options.out, mPath, ignored)) {
    if (!options.isInPlace)
      throw EditError(fmt::format("{} is the document itself; with --in-place it is replaced", options.out.string()));
  } else if (!options.isForced && !isOfKind(options.out, mKind)) {
    throw EditError(
        fmt::format("{} is there and is no document of this form; with --force it is replaced", options.out.string()));
  }
}

void EditableDocument::save(const SaveOptions& options) {
  const std::vector<XmlPart> parts = writtenParts();
  refuseTarget(options);
  const bool isChanged = !mEdits.empty();
  const bool dropsSignature = isChanged && isSigned();
  if (dropsSignature && !options.dropsSignature) {
    throw EditError(fmt::format(
        "{} is signed, and the signature would no longer be true; with --drop-signature it goes", mPath.string()));
  }
  // Somebody else may have written meanwhile: that would be lost.
  if (mKind == Package::Kind::package) {
    if (options.isInPlace && ztaReadFile(mPath.string(), kLargestFile) != mContainer)
      throw EditError(fmt::format("{} was changed by somebody else meanwhile; nothing was written", mPath.string()));
  } else if (options.isInPlace) {
    for (const XmlPart& part : mParts) {
      if (ztaReadFile(part.shown, kLargestFile) != part.bytes)
        throw EditError(fmt::format("{} was changed by somebody else meanwhile; nothing was written", part.shown));
    }
  }
  if (options.isInPlace && !options.backupSuffix.empty()) {
    const fs::path backup = mPath.string() + options.backupSuffix;
    if (mKind == Package::Kind::folder) {
      fs::copy(mPath, backup,
               fs::copy_options::recursive | fs::copy_options::copy_symlinks | fs::copy_options::overwrite_existing);
    } else {
      saveFile(backup, mKind == Package::Kind::flat ? mParts.front().bytes : mContainer);
    }
  }
  if (mKind == Package::Kind::flat) return saveFile(options.out, parts.front().bytes);
  if (mKind == Package::Kind::folder) return saveFolder(options, parts, dropsSignature);
  if (!isChanged) return saveFile(options.out, mContainer);
  std::map<std::string, std::string> replaced;
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (parts[index].bytes != mParts[index].bytes) replaced[parts[index].name] = parts[index].bytes;
  }
  std::vector<std::string> dropped;
  for (const std::string& name : zipEntryNames(mContainer, mPath.string())) {
    if (dropsSignature && isSignature(name)) dropped.push_back(name);
  }
  saveFile(options.out, zipWithEntries(mContainer, replaced, mPath.string(), dropped));
}

// The parts take their places one after the other, once all of them are on the disk.
void EditableDocument::saveFolder(const SaveOptions& options, const std::vector<XmlPart>& parts,
                                  bool dropsSignature) const {
  std::error_code ignored;
  if (!fs::equivalent(options.out, mPath, ignored)) {
    fs::copy(mPath, options.out,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks | fs::copy_options::overwrite_existing);
  }
  std::deque<ZTAAtomicFile> files;  // which cannot be moved
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (parts[index].bytes == mParts[index].bytes) continue;
    files.emplace_back((options.out / parts[index].name).string());
    files.back().write(parts[index].bytes);
  }
  for (ZTAAtomicFile& file : files) file.commit();
  if (dropsSignature) fs::remove(options.out / kSignatures);
}

}  // namespace zt
