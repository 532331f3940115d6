#pragma once
/// @file
/// `NSLog(format, arguments...)`: the platform's log, one line a call.

#include <platform/ZTFormat.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zt {

/// Where the lines of the platform's log go. The standard one writes each line to the error stream.
class ZT_EXPORT NSLogSink {
 public:
  NSLogSink() = default;
  NSLogSink(const NSLogSink&) = delete;
  NSLogSink& operator=(const NSLogSink&) = delete;
  virtual ~NSLogSink();

  virtual void write(std::string_view message) = 0;

  /// The sink of this thread.
  static NSLogSink& current() noexcept;

  /// Makes a sink the current one of this thread while the scope lives. Scopes nest.
  class ZT_EXPORT Scope {
   public:
    explicit Scope(NSLogSink& sink) noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    NSLogSink* mPrevious;
  };
};

/// Collects the messages of this thread's platform log while it lives, instead of printing them.
class ZT_EXPORT NSLogRecorder final : public NSLogSink {
 public:
  NSLogRecorder() : mScope(*this) {}
  ~NSLogRecorder() override;

  void write(std::string_view message) override { mMessages.emplace_back(message); }
  [[nodiscard]] const std::vector<std::string>& messages() const noexcept { return mMessages; }

  /// The messages so far; the record is empty afterwards.
  std::vector<std::string> takeMessages() { return std::exchange(mMessages, {}); }

 private:
  std::vector<std::string> mMessages;
  Scope mScope;
};

/// Writes one line to the current sink of this thread.
template <class... Arguments>
void NSLog(std::type_identity_t<FormatString<Arguments...>> text, const Arguments&... arguments) {
  const std::string message = zt::format<Arguments...>(text, arguments...);
  NSLogSink::current().write(message);
}

}  // namespace zt
