// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// `ZTULog_Fn(level, sourceFile, format, arguments...)`: the levelled log, one line a call. `ZTULog_About(subject,
/// ...)` says which object the line is about.

#include <platform/ZTFormat.h>
#include <platform/ZTReplaceable.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The two levels in use. Any other number is written as it is.
inline constexpr int kZTULogFailure = 1;  ///< a failure that was passed over
inline constexpr int kZTULogNotice = 10;  ///< a notice

struct ZTULogEntry {
  int level = 0;
  std::string sourceFile;  ///< the unit, such as "src/ztstyles/ZTSStyle"
  std::string message;
  /// The object that the message is about, held as long as the entry; none where the call names none.
  Ref<const NSObject> subject = {};

  /// "level, file, message", in one line that is safe on a terminal.
  [[nodiscard]] ZT_EXPORT std::string text() const;
};

class ZTULogSink;
template <>
ZT_EXPORT ZTULogSink*& ZTReplaceable<ZTULogSink>::replacement() noexcept;
template <>
ZT_EXPORT ZTULogSink& ZTReplaceable<ZTULogSink>::standard() noexcept;

/// Where the entries of the levelled log go; `current()` is the sink of this thread. The standard one writes each as a
/// line to the error stream.
class ZT_EXPORT ZTULogSink : public ZTReplaceable<ZTULogSink> {
 public:
  virtual ~ZTULogSink();

  virtual void write(const ZTULogEntry& entry) = 0;
};

/// Collects the entries of this thread's levelled log while it lives, instead of printing them.
class ZT_EXPORT ZTULogRecorder final : public ZTRecorderOf<ZTULogSink, ZTULogEntry> {
 public:
  ~ZTULogRecorder() override;

  void write(const ZTULogEntry& entry) override { keep(entry); }
  [[nodiscard]] const std::vector<ZTULogEntry>& entries() const noexcept { return kept(); }

  /// The entries as lines, in order.
  [[nodiscard]] std::vector<std::string> lines() const;

  /// The entries so far; the record is empty afterwards.
  std::vector<ZTULogEntry> takeEntries() noexcept { return takeKept(); }
};

/// Writes one entry to the current sink of this thread, about an object or about none.
template <class... Arguments>
void ZTULog_About(const NSObject* subject, int level, std::string_view sourceFile,
                  std::type_identity_t<FormatString<Arguments...>> text, const Arguments&... arguments) {
  const ZTULogEntry entry{level, std::string(sourceFile), formatted<Arguments...>(text, arguments...),
                          retainIfAlive(subject)};
  ZTULogSink::current().write(entry);
}

/// The same about none.
template <class... Arguments>
void ZTULog_Fn(int level, std::string_view sourceFile, std::type_identity_t<FormatString<Arguments...>> text,
               const Arguments&... arguments) {
  ZTULog_About<Arguments...>(nullptr, level, sourceFile, text, arguments...);
}

}  // namespace zt
