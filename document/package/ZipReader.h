// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Reading files and packages that nobody vouches for.

#include <document/Finding.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct zip;

namespace zt {

/// How much a document may hold. What is larger is refused with a clear error, so that a small
/// package that inflates without end costs no more than this.
struct PackageLimits {
  std::size_t partBytes = std::size_t{256} << 20;     ///< one part, uncompressed
  std::size_t manifestBytes = std::size_t{16} << 20;  ///< the list of the parts of a package
  std::size_t entryCount = 100'000;                   ///< entries of a package
};

/// The bytes of a regular file. Throws `ReadError`, also for what is larger than the limit.
std::string readFile(const std::filesystem::path& path, std::size_t limit);

/// A package, open for reading. Names of entries never become paths.
class ZipReader {
 public:
  /// Whether the first bytes of a file are those of a package. Does not throw.
  static bool recognises(const std::filesystem::path& path);

  /// Throws `ReadError` for what is no package or has too many entries.
  explicit ZipReader(const std::filesystem::path& path, const PackageLimits& limits = {});
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;
  ~ZipReader();

  /// The bytes of one entry; none if the package has no such entry. Throws `ReadError` for one that is
  /// encrypted, damaged or larger than the limit.
  [[nodiscard]] std::optional<std::string> entry(const std::string& name, std::size_t limit) const;

  /// How messages name the package, and an entry of it.
  [[nodiscard]] const std::string& shown() const noexcept { return mShown; }
  [[nodiscard]] std::string shownEntry(const std::string& name) const { return mShown + ':' + name; }

 private:
  struct Closer {
    void operator()(zip* archive) const;
  };

  std::string mShown;
  std::unique_ptr<zip, Closer> mArchive;
};

}  // namespace zt
