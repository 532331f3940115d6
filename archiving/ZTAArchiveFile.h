// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Bytes of archives: to and from files, compressed or not.

#include <platform/ZTExport.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct stat;

namespace zt {

/// Compressed archives are gzip files; reading tells them apart by their first bytes.
enum class ZTACompression : std::uint8_t { none, gzip };

/// The bytes of a regular file. Raises `ZTAArchiveException`: no such file, no regular file, too long.
ZT_EXPORT std::string ztaReadFile(const std::string& path, std::size_t limit);

/// The text that a gzip stream holds, or the bytes themselves where they are none. Raises
/// `ZTAArchiveException` for a broken stream and for one that holds more than the limit.
ZT_EXPORT std::string ztaUnpack(std::string bytes, const std::string& fileName, std::size_t limit);

/// The first bytes of the text, as far as they can be had without an error.
ZT_EXPORT std::string ztaBeginning(std::string_view bytes, std::size_t count) noexcept;

/// Replaces a file in one step. What is written goes to a file without a name in the same folder (where the file system
/// has no such files, to one with a temporary name), which is flushed to the disk and takes the place at the end:
/// whatever happens, the path names the old file or the whole new one, and a signal leaves nothing behind. Temporary
/// files that dead processes left in the folder are removed.
///
/// The new file has the owner, the group, the permissions and the extended attributes of the old one; a symbolic link
/// stays and its target is replaced, or made where there is none. What cannot be kept is refused before anything is
/// written: a file with further names (hard links), one that is read-only, one whose owner or attributes cannot be
/// given to the new file.
class ZT_EXPORT ZTAAtomicFile {
 public:
  /// Makes the temporary file. This and the other operations raise `ZTAArchiveException`.
  explicit ZTAAtomicFile(const std::string& path);
  /// Without `commit` the temporary file is removed and the old file stays.
  ~ZTAAtomicFile();
  ZTAAtomicFile(const ZTAAtomicFile&) = delete;
  ZTAAtomicFile& operator=(const ZTAAtomicFile&) = delete;

  void write(std::string_view bytes);
  void commit();

 private:
  struct Signals;  // held back while a file with a temporary name is there

  [[noreturn]] void fail(const char* what, int code) const;
  void open(bool replaces);
  void takeOver(const struct stat& old);
  void takeOverAttributes();
  void giveName();
  std::string temporaryName() const;
  void discard() noexcept;

  std::string mPath;
  std::string mTemporary;  // empty while the file has no name
  std::unique_ptr<Signals> mSignals;
  int mFile = -1;
};

}  // namespace zt
