#include <archiving/ZTAArchiveFile.h>
#include <archiving/ZTAError.h>
#include <platform/ZTFormat.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

namespace zt {

namespace {

std::string textOf(int code) { return std::generic_category().message(code); }

[[noreturn]] void raiseFor(const std::string& path, std::string message) {
  throw ZTAArchiveException(ZTAError::withMessage(std::move(message), path));
}

struct OpenFile {
  int descriptor;
  explicit OpenFile(int file) : descriptor(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor >= 0) ::close(descriptor);
  }
};

/// The file that the path leads to through symbolic links; the path itself where there is none yet.
std::string resolved(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  return real != nullptr ? std::string(real.get()) : path;
}

/// Temporary files of one process differ by these.
unsigned nextNumber() {
  static std::atomic<unsigned> last = 0;
  return ++last;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

std::string ztaReadFile(const std::string& path, std::size_t limit) {
  // Without waiting: a named pipe would hang before it can be refused.
  const OpenFile file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.descriptor < 0) raiseFor(path, format("the file cannot be opened: %s", textOf(errno)));
  struct stat facts = {};
  if (::fstat(file.descriptor, &facts) != 0) raiseFor(path, format("the file cannot be read: %s", textOf(errno)));
  if (!S_ISREG(facts.st_mode)) raiseFor(path, "this is no regular file");
  if (static_cast<std::uint64_t>(facts.st_size) > limit) {
    raiseFor(path, format("the file is longer than the %d bytes that are read", limit));
  }
  // One byte more than the file has tells whether it has grown meanwhile.
  std::string bytes(static_cast<std::size_t>(facts.st_size) + 1, '\0');
  std::size_t used = 0;
  while (true) {
    const ssize_t got = ::read(file.descriptor, bytes.data() + used, bytes.size() - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) raiseFor(path, format("the file cannot be read: %s", textOf(errno)));
    if (got == 0) break;
    used += static_cast<std::size_t>(got);
    if (used > limit) raiseFor(path, format("the file is longer than the %d bytes that are read", limit));
    if (used == bytes.size()) bytes.resize(used + std::min(used, limit - used) + 1);
  }
  bytes.resize(used);
  return bytes;
}

std::string ztaUnpack(std::string bytes, const std::string& fileName, std::size_t limit) {
  if (bytes.size() < 2 || bytes[0] != '\x1f' || bytes[1] != '\x8b') return bytes;
  z_stream stream = {};
  if (inflateInit2(&stream, 15 + 16) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> owner(&stream, inflateEnd);
  std::string text;
  char piece[1 << 16];
  const char* left = bytes.data();
  std::size_t leftBytes = bytes.size();
  while (true) {
    if (stream.avail_in == 0) {
      stream.avail_in = static_cast<uInt>(std::min(leftBytes, std::size_t{1} << 30));
      stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(left));
      left += stream.avail_in;
      leftBytes -= stream.avail_in;
    }
    stream.next_out = reinterpret_cast<Bytef*>(piece);
    stream.avail_out = sizeof piece;
    const int state = inflate(&stream, Z_NO_FLUSH);
    if (state == Z_MEM_ERROR) throw std::bad_alloc();
    text.append(piece, sizeof piece - stream.avail_out);
    if (text.size() > limit)
      raiseFor(fileName, format("the compressed file holds more than the %d bytes that are read", limit));
    if (state == Z_STREAM_END) break;
    if (state != Z_OK) raiseFor(fileName, "the compressed file is broken or cut off");
  }
  if (stream.avail_in != 0 || leftBytes != 0) raiseFor(fileName, "something follows the end of the compressed file");
  return text;
}

std::string ztaBeginning(std::string_view bytes, std::size_t count) noexcept {
  if (bytes.size() < 2 || bytes[0] != '\x1f' || bytes[1] != '\x8b') return std::string(bytes.substr(0, count));
  std::string text(count, '\0');
  z_stream stream = {};
  if (inflateInit2(&stream, 15 + 16) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(std::min(bytes.size(), std::size_t{1} << 20));
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(count);
  inflate(&stream, Z_SYNC_FLUSH);
  text.resize(count - stream.avail_out);
  inflateEnd(&stream);
  return text;
}

ZTAAtomicFile::ZTAAtomicFile(const std::string& path) : mPath(resolved(path)) {
  struct stat old = {};
  const bool replaces = ::stat(mPath.c_str(), &old) == 0;
  if (replaces && !S_ISREG(old.st_mode)) raiseFor(path, "this is no regular file and is not replaced");
  const std::string prefix = folderOf(mPath) + "/.ztstyles-" + std::to_string(::getpid()) + '-';
  // A new file gets the permissions that the process gives new files; one that replaces another is closed to
  // others until it has those of the old one.
  do {
    mTemporary = prefix + std::to_string(nextNumber());
    mFile = ::open(mTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, replaces ? 0600 : 0666);
  } while (mFile < 0 && errno == EEXIST);  // left by a process that had our number and was killed
  if (mFile < 0) raiseFor(path, format("the file cannot be written: %s", textOf(errno)));
  if (replaces && ::fchmod(mFile, old.st_mode & 07777) != 0) {
    const int code = errno;
    ::close(mFile);
    ::unlink(mTemporary.c_str());
    raiseFor(path, format("the file cannot be written: %s", textOf(code)));
  }
}

ZTAAtomicFile::~ZTAAtomicFile() {
  if (mFile >= 0) ::close(mFile);
  if (!mTemporary.empty()) ::unlink(mTemporary.c_str());
}

void ZTAAtomicFile::fail(const char* what, int code) const { raiseFor(mPath, format("%s: %s", what, textOf(code))); }

void ZTAAtomicFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(mFile, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("the file cannot be written", errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void ZTAAtomicFile::commit() {
  if (::fsync(mFile) != 0) fail("the file cannot be written", errno);
  if (::close(std::exchange(mFile, -1)) != 0) fail("the file cannot be written", errno);
  if (::rename(mTemporary.c_str(), mPath.c_str()) != 0) fail("the file cannot be replaced", errno);
  mTemporary.clear();
  // So that the new name outlives a power cut. Where a folder cannot be flushed, the file is as safe as it gets.
  const OpenFile folder(::open(folderOf(mPath).c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
  if (folder.descriptor >= 0) ::fsync(folder.descriptor);
}

}  // namespace zt
