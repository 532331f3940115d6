// SPDX-License-Identifier: MIT
#include <platform/NSLog.h>
#include <support/ZTULog.h>

namespace zt {

namespace {

class ErrorStreamSink final : public ZTULogSink {
 public:
  void write(const ZTULogEntry& entry) override { writeErrorLine(entry.text()); }
};

}  // namespace

std::string ZTULogEntry::text() const { return singleLine(format("%d, %@, %@", level, sourceFile, message)); }

ZTULogSink::~ZTULogSink() = default;

template <>
ZTULogSink*& ZTReplaceable<ZTULogSink>::replacement() noexcept {
  thread_local ZTULogSink* current = nullptr;
  return current;
}

template <>
ZTULogSink& ZTReplaceable<ZTULogSink>::standard() noexcept {
  static ZTULogSink* standard = new ErrorStreamSink;
  return *standard;
}

ZTULogRecorder::~ZTULogRecorder() = default;

std::vector<std::string> ZTULogRecorder::lines() const {
  std::vector<std::string> result;
  result.reserve(kept().size());
  for (const ZTULogEntry& entry : kept()) result.push_back(entry.text());
  return result;
}

}  // namespace zt
