// SPDX-License-Identifier: MIT
#include <document/package/ZipRewriter.h>

#include <document/Finding.h>

#include <fmt/core.h>
#include <zip.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <set>

namespace zt {

namespace {

struct ArchiveCloser {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct SourceCloser {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;
using Source = std::unique_ptr<zip_source_t, SourceCloser>;

Source sourceOf(std::string_view bytes) {
  Source source(zip_source_buffer_create(bytes.data(), bytes.size(), 0, nullptr));
  if (source == nullptr) throw std::bad_alloc();
  return source;
}

/// A source that may be written: it owns its bytes. libzip frees bytes that it was only lent, once it has kept the
/// unchanged entries in front of a changed one.
Source ownSourceOf(std::string_view bytes) {
  void* copy = std::malloc(bytes.size());
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, bytes.data(), bytes.size());
  Source source(zip_source_buffer_create(copy, bytes.size(), 1, nullptr));
  if (source == nullptr) {
    std::free(copy);
    throw std::bad_alloc();
  }
  return source;
}

Archive open(zip_source_t& source, int flags, const std::string& shown) {
  zip_error_t error;
  zip_error_init(&error);
  Archive archive(zip_open_from_source(&source, flags, &error));
  const std::string message = archive == nullptr ? zip_error_strerror(&error) : "";
  zip_error_fini(&error);
  if (archive == nullptr) throw ReadError({shown}, fmt::format("damaged package: {}", message));
  zip_source_keep(&source);  // the archive takes one share over
  return archive;
}

[[noreturn]] void fail(zip_t& archive, const std::string& shown) {
  throw ReadError({shown}, fmt::format("the package cannot be written: {}", zip_strerror(&archive)));
}

std::vector<std::string> namesIn(zip_t& archive, const std::string& shown) {
  std::vector<std::string> names;
  const zip_int64_t count = zip_get_num_entries(&archive, 0);
  for (zip_int64_t index = 0; index < count; ++index) {
    const char* name = zip_get_name(&archive, static_cast<zip_uint64_t>(index), ZIP_FL_ENC_RAW);
    if (name == nullptr) fail(archive, shown);
    names.emplace_back(name);
  }
  return names;
}

void replace(zip_t& archive, const std::string& name, const std::string& content, const std::string& shown) {
  const zip_int64_t found = zip_name_locate(&archive, name.c_str(), ZIP_FL_ENC_RAW);
  if (found < 0) throw ReadError({shown}, fmt::format("the package has no entry '{}'", name));
  const auto index = static_cast<zip_uint64_t>(found);
  zip_stat_t entry;
  zip_stat_init(&entry);
  if (zip_stat_index(&archive, index, 0, &entry) != 0) fail(archive, shown);
  if ((entry.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && entry.encryption_method != ZIP_EM_NONE)
    throw ReadError({shown}, fmt::format("the entry '{}' is encrypted", name));
  zip_uint8_t system = 0;
  zip_uint32_t attributes = 0;
  if (zip_file_get_external_attributes(&archive, index, 0, &system, &attributes) != 0) fail(archive, shown);
  zip_source_t* source = zip_source_buffer(&archive, content.data(), content.size(), 0);
  if (source == nullptr) throw std::bad_alloc();
  if (zip_file_replace(&archive, index, source, 0) != 0) {
    zip_source_free(source);
    fail(archive, shown);
  }
  const bool isStored = (entry.valid & ZIP_STAT_COMP_METHOD) != 0 && entry.comp_method == ZIP_CM_STORE;
  if (zip_set_file_compression(&archive, index, isStored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0) != 0 ||
      zip_file_set_mtime(&archive, index, entry.mtime, 0) != 0 ||
      zip_file_set_external_attributes(&archive, index, 0, system, attributes) != 0)
    fail(archive, shown);
}

}  // namespace

std::vector<std::string> zipEntryNames(std::string_view bytes, const std::string& shown) {
  const Source source = sourceOf(bytes);
  return namesIn(*open(*source, ZIP_RDONLY, shown), shown);
}

std::string zipEntry(std::string_view bytes, const std::string& name, const std::string& shown) {
  const Source source = sourceOf(bytes);
  const Archive archive = open(*source, ZIP_RDONLY, shown);
  zip_stat_t facts;
  zip_stat_init(&facts);
  if (zip_stat(archive.get(), name.c_str(), ZIP_FL_ENC_RAW, &facts) != 0) return {};
  const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen_index(archive.get(), facts.index, 0),
                                                               zip_fclose);
  if (file == nullptr) fail(*archive, shown);
  constexpr zip_uint64_t kLargest = std::uint64_t{1} << 30;
  if (facts.size > kLargest) throw ReadError({shown}, fmt::format("the entry '{}' is too large", name));
  std::string content(facts.size, '\0');
  const zip_int64_t read = zip_fread(file.get(), content.data(), content.size());
  if (read < 0 || static_cast<zip_uint64_t>(read) != facts.size) fail(*archive, shown);
  return content;
}

std::string zipWithEntries(std::string_view bytes, const std::map<std::string, std::string>& replaced,
                           const std::string& shown, const std::vector<std::string>& dropped) {
  const Source source = ownSourceOf(bytes);
  Archive archive = open(*source, 0, shown);
  std::set<std::string> seen;
  for (const std::string& name : namesIn(*archive, shown)) {
    if (!seen.insert(name).second) throw ReadError({shown}, fmt::format("the package has two entries '{}'", name));
  }
  for (const auto& [name, content] : replaced) replace(*archive, name, content, shown);
  for (const std::string& name : dropped) {
    const zip_int64_t index = zip_name_locate(archive.get(), name.c_str(), ZIP_FL_ENC_RAW);
    if (index < 0 || zip_delete(archive.get(), static_cast<zip_uint64_t>(index)) != 0) fail(*archive, shown);
  }
  if (zip_close(archive.get()) != 0) fail(*archive, shown);
  archive.release();  // closed, and released by that

  zip_stat_t facts;
  zip_stat_init(&facts);
  if (zip_source_open(source.get()) != 0 || zip_source_stat(source.get(), &facts) != 0) throw std::bad_alloc();
  std::string written(facts.size, '\0');
  const zip_int64_t read = zip_source_read(source.get(), written.data(), written.size());
  zip_source_close(source.get());
  if (read < 0 || static_cast<zip_uint64_t>(read) != facts.size)
    throw ReadError({shown}, "the package cannot be written");
  return written;
}

}  // namespace zt
