// SPDX-License-Identifier: MIT

// Where a document goes: what must not be overwritten, and how each form takes its place in one step.

#include <document/editing/EditableDocument.h>

#include <archiving/ZTAArchiveFile.h>
#include <document/package/ZipRewriter.h>

#include <fmt/format.h>

#include <deque>

namespace zt {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{2} << 30;

void saveFile(const fs::path& path, std::string_view bytes) {
  ZTAAtomicFile file(path.string());
  file.write(bytes);
  file.commit();
}

}  // namespace

DocumentSource DocumentSource::package(fs::path path, std::vector<XmlPart> parts) {
  std::string container = ztaReadFile(path.string(), kLargestFile);
  for (const XmlPart& part : parts) {
    if (zipEntry(container, part.name, path.string()) != part.bytes)
      throw ReadError({path.string()}, "changed while it was read");
  }
  return {std::move(path), DocumentForm::package, std::move(container), std::move(parts)};
}

std::vector<std::string> EditableDocument::signatures() const {
  std::vector<std::string> found;
  if (mSource.form == DocumentForm::package) {
    found = zipEntryNames(mSource.container, mSource.path.string());
  } else if (mSource.form == DocumentForm::folder) {
    for (const auto& entry : fs::recursive_directory_iterator(mSource.path)) {
      if (entry.is_regular_file()) found.push_back(entry.path().lexically_relative(mSource.path).generic_string());
    }
  }
  std::erase_if(found, [this](const std::string& name) { return !isSignature(name); });
  return found;
}

void EditableDocument::refuseTarget(const SaveOptions& options) const {
  std::error_code ignored;
  if (!fs::exists(options.out, ignored)) return;
  if (fs::equivalent(options.out, mSource.path, ignored)) {
    if (!options.isInPlace)
      throw EditError(fmt::format("{} is the document itself; with --in-place it is replaced", options.out.string()));
  } else if (mSource.form == DocumentForm::folder && fs::is_directory(options.out, ignored)) {
    // What else is there may be anybody's, such as a checkout or the pictures of another document.
    if (!options.isForced && !fs::is_empty(options.out, ignored)) {
      throw EditError(fmt::format("{} is a folder that holds something; with --force the document is put among it",
                                  options.out.string()));
    }
  } else if (!options.isForced && !isReplaceable(options.out)) {
    throw EditError(
        fmt::format("{} is there and is no document of this form; with --force it is replaced", options.out.string()));
  }
}

// Somebody else may have written since the document was read: that would be lost.
void EditableDocument::refuseWrittenMeanwhile() const {
  const auto refuseUnless = [](const std::string& path, const std::string& bytes) {
    if (ztaReadFile(path, kLargestFile) != bytes)
      throw EditError(fmt::format("{} was changed by somebody else meanwhile; nothing was written", path));
  };
  if (mSource.form == DocumentForm::package) return refuseUnless(mSource.path.string(), mSource.container);
  for (const XmlPart& part : mSource.parts) refuseUnless(part.shown, part.bytes);
}

void EditableDocument::keepBackup(const std::string& suffix) const {
  const fs::path backup = mSource.path.string() + suffix;
  if (mSource.form != DocumentForm::folder)
    return saveFile(backup, mSource.form == DocumentForm::flat ? mSource.parts.front().bytes : mSource.container);
  std::error_code ignored;
  if (fs::exists(backup, ignored)) throw EditError(fmt::format("{} is there already", backup.string()));
  fs::copy(mSource.path, backup, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

void EditableDocument::save(const SaveOptions& options) {
  const std::vector<XmlPart> parts = writtenParts();
  refuseTarget(options);
  const bool isChanged = !mEdits.empty();
  const std::vector<std::string> dropped = isChanged ? signatures() : std::vector<std::string>();
  if (!dropped.empty() && (!options.dropsSignature || !canDropSignatures())) {
    throw EditError(fmt::format("{} is signed, and the signature would no longer be true{}", mSource.path.string(),
                                canDropSignatures() ? "; with --drop-signature it goes" : ""));
  }
  if (options.isInPlace) refuseWrittenMeanwhile();
  if (options.isInPlace && !options.backupSuffix.empty()) keepBackup(options.backupSuffix);
  if (mSource.form == DocumentForm::flat) return saveFile(options.out, parts.front().bytes);
  if (mSource.form == DocumentForm::folder) return saveFolder(options, parts, dropped);
  if (!isChanged) return saveFile(options.out, mSource.container);
  std::map<std::string, std::string> replaced;
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (parts[index].bytes != mSource.parts[index].bytes) replaced[parts[index].name] = parts[index].bytes;
  }
  saveFile(options.out, zipWithEntries(mSource.container, replaced, mSource.path.string(), dropped));
}

// The parts take their places one after the other, once all of them are on the disk.
void EditableDocument::saveFolder(const SaveOptions& options, const std::vector<XmlPart>& parts,
                                  const std::vector<std::string>& dropped) const {
  std::error_code ignored;
  if (!fs::equivalent(options.out, mSource.path, ignored)) {
    fs::copy(mSource.path, options.out,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks | fs::copy_options::overwrite_existing);
  }
  std::deque<ZTAAtomicFile> files;  // which cannot be moved
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (parts[index].bytes == mSource.parts[index].bytes) continue;
    files.emplace_back((options.out / parts[index].name).string());
    files.back().write(parts[index].bytes);
  }
  for (ZTAAtomicFile& file : files) file.commit();
  for (const std::string& name : dropped) fs::remove(options.out / name);
}

}  // namespace zt
