#include <platform/NSLog.h>

#include <cstdio>
#include <utility>

namespace zt {

namespace {

class ErrorStreamSink final : public NSLogSink {
 public:
  void write(std::string_view message) override {
    const std::string line = singleLine(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);  // in one call: lines of several threads do not mix
  }
};

thread_local NSLogSink* tCurrent = nullptr;

}  // namespace

NSLogSink::~NSLogSink() = default;

NSLogSink& NSLogSink::current() noexcept {
  static NSLogSink* standard = new ErrorStreamSink;  // outlives every static
  return tCurrent != nullptr ? *tCurrent : *standard;
}

NSLogSink::Scope::Scope(NSLogSink& sink) noexcept : mPrevious(std::exchange(tCurrent, &sink)) {}

NSLogSink::Scope::~Scope() { tCurrent = mPrevious; }

NSLogRecorder::~NSLogRecorder() = default;

}  // namespace zt
