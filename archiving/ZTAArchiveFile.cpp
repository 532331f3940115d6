// SPDX-License-Identifier: MIT
#include <archiving/ZTAArchiveFile.h>
#include <archiving/ZTAError.h>
#include <archiving/ZTAFileInternal.h>
#include <platform/ZTFormat.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace zt {

using file::OpenFile;
using file::raiseFor;
using file::textOf;

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

}  // namespace zt
