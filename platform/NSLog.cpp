// SPDX-License-Identifier: MIT
#include <platform/NSLog.h>

#include <cstdio>

namespace zt {

namespace {

class ErrorStreamSink final : public NSLogSink {
 public:
  void write(std::string_view message) override { writeErrorLine(message); }
};

}  // namespace

void writeErrorLine(std::string_view text) {
  const std::string line = singleLine(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);  // in one call
}

NSLogSink::~NSLogSink() = default;

template <>
NSLogSink*& ZTReplaceable<NSLogSink>::replacement() noexcept {
  thread_local NSLogSink* current = nullptr;
  return current;
}

template <>
NSLogSink& ZTReplaceable<NSLogSink>::standard() noexcept {
  static NSLogSink* standard = new ErrorStreamSink;
  return *standard;
}

NSLogRecorder::~NSLogRecorder() = default;

}  // namespace zt
