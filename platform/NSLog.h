// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// `NSLog(format, arguments...)`: the platform's log, one line a call.

#include <platform/ZTFormat.h>
#include <platform/ZTReplaceable.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// Writes the text as one line to the error stream, safe on a terminal. Lines of several threads do not mix.
ZT_EXPORT void writeErrorLine(std::string_view text);

class NSLogSink;
template <>
ZT_EXPORT NSLogSink*& ZTReplaceable<NSLogSink>::replacement() noexcept;
template <>
ZT_EXPORT NSLogSink& ZTReplaceable<NSLogSink>::standard() noexcept;

/// Where the lines of the platform's log go; `current()` is the sink of this thread. The standard one writes each line
/// to the error stream.
class ZT_EXPORT NSLogSink : public ZTReplaceable<NSLogSink> {
 public:
  virtual ~NSLogSink();

  virtual void write(std::string_view message) = 0;
};

/// Collects the messages of this thread's platform log while it lives, instead of printing them.
class ZT_EXPORT NSLogRecorder final : public ZTRecorderOf<NSLogSink, std::string> {
 public:
  ~NSLogRecorder() override;

  void write(std::string_view message) override { keep(std::string(message)); }
  [[nodiscard]] const std::vector<std::string>& messages() const noexcept { return kept(); }

  /// The messages so far; the record is empty afterwards.
  std::vector<std::string> takeMessages() noexcept { return takeKept(); }
};

/// Writes one line to the current sink of this thread.
template <class... Arguments>
void NSLog(std::type_identity_t<FormatString<Arguments...>> text, const Arguments&... arguments) {
  const std::string message = formatted<Arguments...>(text, arguments...);
  NSLogSink::current().write(message);
}

}  // namespace zt
