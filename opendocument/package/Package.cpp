// SPDX-License-Identifier: MIT
#include <opendocument/package/Package.h>

#include <opendocument/package/PackageManifest.h>

#include <system_error>

namespace zt {

namespace {

constexpr const char* kStyles = "styles.xml";
constexpr const char* kContent = "content.xml";
constexpr const char* kManifest = "META-INF/manifest.xml";
constexpr const char* kMimetype = "mimetype";

// Whether a link in the folder leads out of it: an unpacked foreign document must not choose what is read.
bool leadsOutside(const std::filesystem::path& folder, const std::filesystem::path& file) {
  std::error_code error;
  const auto home = std::filesystem::canonical(folder, error);
  if (error) return false;
  const auto target = std::filesystem::canonical(file, error);
  return !error && target.parent_path() != home;
}

}  // namespace

Package Package::read(const std::filesystem::path& path, const PackageLimits& limits) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return readFolder(path, limits);
  if (std::filesystem::is_regular_file(path, error) && ZipReader::recognises(path)) return readZip(path, limits);
  const std::string extension = path.extension().string();
  std::string bytes = readFile(path, limits.partBytes);
  if (extension == ".odt" || extension == ".ott") {
    throw ReadError({path.string()}, "damaged package: it does not start like one");
  }
  return fromFlatText(std::move(bytes), path.string());
}

Package Package::fromFlatText(std::string bytes, std::string shown) {
  Package package(Kind::flat, shown);
  package.mParts.push_back({"flat", std::move(shown), std::move(bytes)});
  return package;
}

Package Package::fromParts(Kind kind, std::vector<XmlPart> parts, std::string shown) {
  Package package(kind, std::move(shown));
  package.mParts = std::move(parts);
  return package;
}

Package Package::readFolder(const std::filesystem::path& path, const PackageLimits& limits) {
  Package package(Kind::folder, path.string());
  for (const char* name : {kStyles, kContent}) {
    const auto file = path / name;
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(file, error))) continue;
    try {
      if (leadsOutside(path, file)) throw ReadError({file.string()}, "a link that leads out of the folder; refused");
      package.mParts.push_back({name, file.string(), readFile(file, limits.partBytes)});
    } catch (const ReadError& failure) {
      package.passOver(failure);
    }
  }
  package.refuseIfEmpty();
  return package;
}

Package Package::readZip(const std::filesystem::path& path, const PackageLimits& limits) {
  Package package(Kind::package, path.string());
  const ZipReader archive(path, limits);

  try {
    if (const auto mimetype = archive.entry(kMimetype, 1024);
        mimetype && !mimetype->starts_with("application/vnd.oasis.opendocument")) {
      package.mFindings.push_back({Finding::Severity::warning,
                                   "unknown-type",
                                   {archive.shownEntry(kMimetype)},
                                   {},
                                   "not the type of an OpenDocument package; read nevertheless"});
    }
    // The encryption of OpenDocument is told in the manifest: the entries themselves look like any others.
    if (auto manifest = archive.entry(kManifest, limits.manifestBytes)) {
      if (manifestTellsOfEncryption({kManifest, archive.shownEntry(kManifest), std::move(*manifest)})) {
        throw ReadError({package.mShown}, "encrypted; save it without a password first");
      }
    }
  } catch (const ReadError& failure) {
    if (failure.message().starts_with("encrypted")) throw;
    package.passOver(failure);
  }
  for (const char* name : {kStyles, kContent}) {
    try {
      if (auto bytes = archive.entry(name, limits.partBytes)) {
        package.mParts.push_back({name, archive.shownEntry(name), std::move(*bytes)});
      }
    } catch (const ReadError& failure) {
      package.passOver(failure);
    }
  }
  package.refuseIfEmpty();
  return package;
}

void Package::passOver(const ReadError& error) {
  mFindings.push_back({Finding::Severity::error, "unreadable-part", error.place(), {}, error.message() + "; left out"});
}

void Package::refuseIfEmpty() const {
  if (!mParts.empty()) return;
  for (const Finding& finding : mFindings) {
    if (finding.severity == Finding::Severity::error) {
      std::string message = finding.message;
      if (message.ends_with("; left out")) message.resize(message.size() - 10);
      throw ReadError(finding.place, message);
    }
  }
  throw ReadError({mShown}, "holds neither styles.xml nor content.xml");
}

}  // namespace zt
