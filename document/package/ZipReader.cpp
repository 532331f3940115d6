// SPDX-License-Identifier: MIT
#include <document/package/ZipReader.h>

#include <fmt/core.h>
#include <zip.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace zt {

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
struct EntryCloser {
  void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};

}  // namespace

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

bool ZipReader::recognises(const std::filesystem::path& path) {
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  std::array<char, 4> mark = {};
  return file != nullptr && std::fread(mark.data(), 1, mark.size(), file.get()) == mark.size() && mark[0] == 'P' &&
         mark[1] == 'K' && (std::memcmp(&mark[2], "\3\4", 2) == 0 || std::memcmp(&mark[2], "\5\6", 2) == 0);
}

void ZipReader::Closer::operator()(zip* archive) const { zip_discard(archive); }

ZipReader::ZipReader(const std::filesystem::path& path, const PackageLimits& limits) : mShown(path.string()) {
  int code = 0;
  mArchive.reset(zip_open(mShown.c_str(), ZIP_RDONLY, &code));
  if (mArchive == nullptr) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const std::string message = zip_error_strerror(&error);
    zip_error_fini(&error);
    throw ReadError({mShown}, fmt::format("damaged package: {}", message));
  }
  const zip_int64_t count = zip_get_num_entries(mArchive.get(), 0);
  if (count < 0 || static_cast<std::size_t>(count) > limits.entryCount) {
    throw ReadError({mShown}, fmt::format("more than {} entries; refused", limits.entryCount));
  }
}

ZipReader::~ZipReader() = default;

std::optional<std::string> ZipReader::entry(const std::string& name, std::size_t limit) const {
  zip_t* archive = mArchive.get();
  const std::string shown = shownEntry(name);
  const zip_int64_t index = zip_name_locate(archive, name.c_str(), ZIP_FL_ENC_RAW);
  if (index < 0) return std::nullopt;
  zip_stat_t stat;
  zip_stat_init(&stat);
  if (zip_stat_index(archive, static_cast<zip_uint64_t>(index), 0, &stat) != 0) {
    throw ReadError({shown}, fmt::format("damaged package: {}", zip_strerror(archive)));
  }
  if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && stat.encryption_method != ZIP_EM_NONE) {
    throw ReadError({shown}, "encrypted; save it without a password first");
  }
  // The size that the package states is only a hint; what comes out is counted.
  if ((stat.valid & ZIP_STAT_SIZE) != 0 && stat.size > limit) {
    throw ReadError({shown}, fmt::format("inflates to more than {} bytes; refused", limit));
  }
  const std::unique_ptr<zip_file_t, EntryCloser> file(zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0));
  if (file == nullptr) throw ReadError({shown}, fmt::format("damaged package: {}", zip_strerror(archive)));

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

}  // namespace zt
