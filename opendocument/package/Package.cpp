#include <opendocument/package/Package.h>

#include <opendocument/package/PackageManifest.h>

#include <fmt/core.h>
#include <zip.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <system_error>

namespace zt {

namespace {

constexpr const char* kStyles = "styles.xml";
constexpr const char* kContent = "content.xml";
constexpr const char* kManifest = "META-INF/manifest.xml";
constexpr const char* kMimetype = "mimetype";

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
struct ArchiveCloser {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct EntryCloser {
  void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;

std::string readFile(const std::filesystem::path& path, std::size_t limit) {
  const std::string shown = path.string();
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) throw ReadError({shown}, "no such file");
  if (error) throw ReadError({shown}, error.message());
  // A pipe would wait for ever and a device may never end.
  if (status.type() != std::filesystem::file_type::regular) throw ReadError({shown}, "not a regular file");
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) throw ReadError({shown}, std::generic_category().message(errno));

  std::string bytes;
  std::array<char, 1 << 16> block;  // NOLINT: filled below
  std::size_t count = 0;
  while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
    if (bytes.size() + count > limit) throw ReadError({shown}, fmt::format("larger than {} bytes; refused", limit));
    bytes.append(block.data(), count);
  }
  if (std::ferror(file.get()) != 0) throw ReadError({shown}, "cannot be read to its end");
  return bytes;
}

bool startsLikeZip(const std::filesystem::path& path) {
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  std::array<char, 4> mark = {};
  return file != nullptr && std::fread(mark.data(), 1, mark.size(), file.get()) == mark.size() && mark[0] == 'P' &&
         mark[1] == 'K' && (std::memcmp(&mark[2], "\3\4", 2) == 0 || std::memcmp(&mark[2], "\5\6", 2) == 0);
}

Archive openArchive(const std::string& path) {
  int code = 0;
  Archive archive(zip_open(path.c_str(), ZIP_RDONLY, &code));
  if (archive == nullptr) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const std::string message = zip_error_strerror(&error);
    zip_error_fini(&error);
    throw ReadError({path}, fmt::format("damaged package: {}", message));
  }
  return archive;
}

// The bytes of one entry; none if the package has no such entry.
std::optional<std::string> readEntry(zip_t& archive, const char* name, const std::string& shown, std::size_t limit) {
  const zip_int64_t index = zip_name_locate(&archive, name, ZIP_FL_ENC_RAW);
  if (index < 0) return std::nullopt;
  zip_stat_t entry;
  zip_stat_init(&entry);
  if (zip_stat_index(&archive, static_cast<zip_uint64_t>(index), 0, &entry) != 0) {
    throw ReadError({shown}, fmt::format("damaged package: {}", zip_strerror(&archive)));
  }
  if ((entry.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && entry.encryption_method != ZIP_EM_NONE) {
    throw ReadError({shown}, "encrypted; save it without a password first");
  }
  // The size that the package states is only a hint; what comes out is counted.
  if ((entry.valid & ZIP_STAT_SIZE) != 0 && entry.size > limit) {
    throw ReadError({shown}, fmt::format("inflates to more than {} bytes; refused", limit));
  }
  const std::unique_ptr<zip_file_t, EntryCloser> file(zip_fopen_index(&archive, static_cast<zip_uint64_t>(index), 0));
  if (file == nullptr) throw ReadError({shown}, fmt::format("damaged package: {}", zip_strerror(&archive)));

  std::string bytes;
  std::array<char, 1 << 16> block;  // NOLINT: filled below
  for (;;) {
    const zip_int64_t count = zip_fread(file.get(), block.data(), block.size());
    if (count < 0) {
      throw ReadError({shown}, fmt::format("damaged package: {}", zip_error_strerror(zip_file_get_error(file.get()))));
    }
    if (count == 0) break;
    if (bytes.size() + static_cast<std::size_t>(count) > limit) {
      throw ReadError({shown}, fmt::format("inflates to more than {} bytes; refused", limit));
    }
    bytes.append(block.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

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
  if (std::filesystem::is_regular_file(path, error) && startsLikeZip(path)) return readZip(path, limits);
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
  const Archive archive = openArchive(package.mShown);
  const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
  if (count < 0 || static_cast<std::size_t>(count) > limits.entryCount) {
    throw ReadError({package.mShown}, fmt::format("more than {} entries; refused", limits.entryCount));
  }
  const auto shownPart = [&](const char* name) { return package.mShown + ':' + name; };

  try {
    if (const auto mimetype = readEntry(*archive, kMimetype, shownPart(kMimetype), 1024);
        mimetype && !mimetype->starts_with("application/vnd.oasis.opendocument")) {
      package.mFindings.push_back({Finding::Severity::warning,
                                   "unknown-type",
                                   {shownPart(kMimetype)},
                                   {},
                                   "not the type of an OpenDocument package; read nevertheless"});
    }
    // The encryption of OpenDocument is told in the manifest: the entries themselves look like any others.
    if (auto manifest = readEntry(*archive, kManifest, shownPart(kManifest), limits.manifestBytes)) {
      if (manifestTellsOfEncryption({kManifest, shownPart(kManifest), std::move(*manifest)})) {
        throw ReadError({package.mShown}, "encrypted; save it without a password first");
      }
    }
  } catch (const ReadError& failure) {
    if (failure.message().starts_with("encrypted")) throw;
    package.passOver(failure);
  }
  for (const char* name : {kStyles, kContent}) {
    try {
      if (auto bytes = readEntry(*archive, name, shownPart(name), limits.partBytes)) {
        package.mParts.push_back({name, shownPart(name), std::move(*bytes)});
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
