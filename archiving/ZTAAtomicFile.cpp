// SPDX-License-Identifier: MIT

// Replacing a file in one step, with everything that belongs to its name rather than to its bytes.

#include <archiving/ZTAArchiveFile.h>
#include <archiving/ZTAError.h>
#include <archiving/ZTAFileInternal.h>
#include <platform/ZTFormat.h>

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace zt {

namespace {

using file::OpenFile;
using file::raiseFor;
using file::textOf;

constexpr std::string_view kMark = ".ztstyles-";

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// The file that the path leads to through symbolic links, which may not be there yet.
std::string resolved(const std::string& path) {
  std::string at = path;
  constexpr int kMostLinks = 40;
  for (int links = 0; links < kMostLinks; ++links) {
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(at.c_str(), nullptr), std::free);
    if (real != nullptr) return real.get();
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(at.c_str(), target.data(), target.size());
    if (length < 0) return at;
    target.resize(static_cast<std::size_t>(length));
    at = target.starts_with('/') ? target : folderOf(at) + '/' + target;
  }
  raiseFor(path, format("the file cannot be written: %s", textOf(ELOOP)));
}

/// Temporary files of one process differ by these.
unsigned nextNumber() {
  static std::atomic<unsigned> last = 0;
  return ++last;
}

/// Removes what processes that were killed left in the folder. A living process locks its file, which also tells it
/// apart where process numbers mean nothing (containers); the number spares the others from being opened.
void removeLeftOvers(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), ::closedir);
  if (entries == nullptr) return;
  while (const dirent* entry = ::readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(kMark)) continue;
    char* end = nullptr;
    const long process = std::strtol(entry->d_name + kMark.size(), &end, 10);
    if (process <= 0 || *end != '-' || ::kill(static_cast<pid_t>(process), 0) == 0 || errno != ESRCH) continue;
    const std::string path = folder + '/' + entry->d_name;
    const OpenFile file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat facts = {};
    if (file.descriptor < 0 || ::fstat(file.descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) continue;
    if (facts.st_uid == ::geteuid() && ::flock(file.descriptor, LOCK_EX | LOCK_NB) == 0) ::unlink(path.c_str());
  }
}

}  // namespace

/// What would end the process waits until the file has its place or is gone.
struct ZTAAtomicFile::Signals {
  Signals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int each : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGALRM, SIGXCPU}) sigaddset(&ending, each);
    ::pthread_sigmask(SIG_BLOCK, &ending, &before);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

  sigset_t before = {};
};

ZTAAtomicFile::ZTAAtomicFile(const std::string& path) : mPath(resolved(path)) {
  struct stat old = {};
  const bool replaces = ::stat(mPath.c_str(), &old) == 0;
  if (replaces && !S_ISREG(old.st_mode)) raiseFor(path, "this is no regular file and is not replaced");
  if (replaces && (old.st_mode & 0222) == 0) raiseFor(path, "the file is read-only and is not replaced");
  if (replaces && ::access(mPath.c_str(), W_OK) != 0)
    raiseFor(path, format("the file cannot be written: %s", textOf(errno)));
  if (replaces && old.st_nlink > 1) {
    raiseFor(path, format("the file has %d names (hard links), which would part; it is not replaced",
                          static_cast<std::int64_t>(old.st_nlink)));
  }
  removeLeftOvers(folderOf(mPath));
  open(replaces);
  try {
    if (replaces) takeOver(old);
  } catch (...) {
    discard();
    throw;
  }
}

std::string ZTAAtomicFile::temporaryName() const {
  return folderOf(mPath) + '/' + std::string(kMark) + std::to_string(::getpid()) + '-' + std::to_string(nextNumber());
}

// A new file gets the permissions that the process gives new files; one that replaces another is closed to others until
// it has those of the old one.
void ZTAAtomicFile::open(bool replaces) {
  const mode_t mode = replaces ? 0600 : 0666;
  if (::access("/proc/self/fd", X_OK) == 0) {
    mFile = ::open(folderOf(mPath).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode);
    if (mFile >= 0) return;
  }
  mSignals = std::make_unique<Signals>();
  do {
    mTemporary = temporaryName();
    mFile = ::open(mTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  } while (mFile < 0 && errno == EEXIST);
  if (mFile >= 0) {
    ::flock(mFile, LOCK_EX | LOCK_NB);
    return;
  }
  mTemporary.clear();
  raiseFor(mPath, format("the file cannot be written: %s", textOf(errno)));
}

void ZTAAtomicFile::takeOver(const struct stat& old) {
  struct stat now = {};
  if (::fstat(mFile, &now) != 0) fail("the file cannot be written", errno);
  const bool isOther = now.st_uid != old.st_uid || now.st_gid != old.st_gid;
  if (isOther && ::fchown(mFile, old.st_uid, old.st_gid) != 0)
    fail("the file belongs to somebody else, which a new one could not; it is not replaced", errno);
  takeOverAttributes();
  // Last: giving a file away takes these bits from it, and attributes may change them.
  if (::fchmod(mFile, old.st_mode & 07777) != 0) fail("the file cannot be written", errno);
}

void ZTAAtomicFile::takeOverAttributes() {
  const OpenFile old(::open(mPath.c_str(), O_RDONLY | O_CLOEXEC));
  if (old.descriptor < 0) fail("the file cannot be read", errno);
  const ssize_t size = ::flistxattr(old.descriptor, nullptr, 0);
  if (size <= 0) return;
  std::string names(static_cast<std::size_t>(size), '\0');
  const ssize_t listed = ::flistxattr(old.descriptor, names.data(), names.size());
  if (listed < 0) fail("the attributes of the file cannot be read", errno);
  names.resize(static_cast<std::size_t>(listed));
  const auto valueOf = [](int file, const char* name) {
    const ssize_t length = ::fgetxattr(file, name, nullptr, 0);
    std::string value(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    const ssize_t read = ::fgetxattr(file, name, value.data(), value.size());
    value.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    return value;
  };
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    const char* name = names.c_str() + at;
    const std::string value = valueOf(old.descriptor, name);
    if (valueOf(mFile, name) == value && !value.empty()) continue;  // given by the system, as labels are
    if (::fsetxattr(mFile, name, value.data(), value.size(), 0) == 0) continue;
    const int code = errno;
    fail(format("the attribute %s of the file could not be kept; it is not replaced", std::string(name)).c_str(), code);
  }
}

ZTAAtomicFile::~ZTAAtomicFile() { discard(); }

void ZTAAtomicFile::discard() noexcept {
  if (mFile >= 0) ::close(std::exchange(mFile, -1));
  if (!mTemporary.empty()) ::unlink(mTemporary.c_str());
  mTemporary.clear();
  mSignals.reset();
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

// A file without a name can get one that is free, but not take the place of another: so it has a temporary name for as
// long as the two calls take, during which no signal ends the process.
void ZTAAtomicFile::giveName() {
  if (!mTemporary.empty()) return;
  mSignals = std::make_unique<Signals>();
  const std::string source = "/proc/self/fd/" + std::to_string(mFile);
  std::string name;
  do {
    name = temporaryName();
    if (::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      mTemporary = std::move(name);
      return;
    }
  } while (errno == EEXIST);
  fail("the file cannot be written", errno);
}

void ZTAAtomicFile::commit() {
  if (::fsync(mFile) != 0) fail("the file cannot be written", errno);
  giveName();
  if (::rename(mTemporary.c_str(), mPath.c_str()) != 0) fail("the file cannot be replaced", errno);
  mTemporary.clear();
  mSignals.reset();
  if (::close(std::exchange(mFile, -1)) != 0) fail("the file cannot be written", errno);
  // So that the new name outlives a power cut. Where a folder cannot be flushed, the file is as safe as it gets.
  const OpenFile folder(::open(folderOf(mPath).c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
  if (folder.descriptor >= 0) ::fsync(folder.descriptor);
}

}  // namespace zt
