#include <support/ZTULog.h>

#include <cstdio>
#include <utility>

namespace zt {

namespace {

class ErrorStreamSink final : public ZTULogSink {
 public:
  void write(const ZTULogEntry& entry) override {
    const std::string line = entry.text() + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);  // in one call: lines of several threads do not mix
  }
};

thread_local ZTULogSink* tCurrent = nullptr;

}  // namespace

std::string ZTULogEntry::text() const { return singleLine(format("%d, %@, %@", level, sourceFile, message)); }

ZTULogSink::~ZTULogSink() = default;

ZTULogSink& ZTULogSink::current() noexcept {
  static ZTULogSink* standard = new ErrorStreamSink;  // outlives every static
  return tCurrent != nullptr ? *tCurrent : *standard;
}

ZTULogSink::Scope::Scope(ZTULogSink& sink) noexcept : mPrevious(std::exchange(tCurrent, &sink)) {}

ZTULogSink::Scope::~Scope() { tCurrent = mPrevious; }

ZTULogRecorder::~ZTULogRecorder() = default;

std::vector<std::string> ZTULogRecorder::lines() const {
  std::vector<std::string> result;
  result.reserve(mEntries.size());
  for (const ZTULogEntry& entry : mEntries) result.push_back(entry.text());
  return result;
}

}  // namespace zt
