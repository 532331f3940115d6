// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What the parts of the floor that deal with files share.

#include <archiving/ZTAError.h>

#include <unistd.h>

#include <string>
#include <system_error>
#include <utility>

namespace zt::file {

/// The system's words for an error.
inline std::string textOf(int code) { return std::generic_category().message(code); }

[[noreturn]] inline void raiseFor(const std::string& path, std::string message) {
  throw ZTAArchiveException(ZTAError::withMessage(std::move(message), path));
}

/// A file that is closed at the end of a scope.
struct OpenFile {
  int descriptor;
  explicit OpenFile(int opened) : descriptor(opened) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor >= 0) ::close(descriptor);
  }
};

}  // namespace zt::file
