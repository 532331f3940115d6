// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSAssertionHandler.h>
#include <platform/ZTReplaceable.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zt {

class ZTUAssertionHandler;
template <>
ZT_EXPORT ZTUAssertionHandler*& ZTReplaceable<ZTUAssertionHandler>::replacement() noexcept;
template <>
ZT_EXPORT ZTUAssertionHandler& ZTReplaceable<ZTUAssertionHandler>::standard() noexcept;

/// The handler for programming errors after which an operation goes on or returns unchanged: it
/// records the failure and returns to the caller. It never stops the program.
///
/// Each thread has a current handler. The standard one prints one line to the error stream; a scope
/// replaces it, which is how tests and tools read reports. Call it through `ZT_REPORT`.
class ZT_EXPORT ZTUAssertionHandler : public ZTReplaceable<ZTUAssertionHandler> {
 public:
  virtual ~ZTUAssertionHandler();

  /// The handler of this thread.
  static ZTUAssertionHandler& currentHandler() noexcept { return current(); }

  /// Hands the failure to `record` and returns. An exception of `record` is passed on, so that an
  /// application may choose to stop at the first failure.
  void handleFailureInMethod(std::string_view operation, const void* object, std::string_view sourceFile, int line,
                             std::string description);
  /// The same with the whole report.
  void handleFailure(AssertionReport report);

 protected:
  /// Hook: what to do with a failure. The base prints its text.
  virtual void record(AssertionReport report);
};

/// Collects the failures that are reported on this thread while it lives, instead of printing them.
class ZT_EXPORT ZTUAssertionRecorder final : public ZTRecorderOf<ZTUAssertionHandler, AssertionReport> {
 public:
  ~ZTUAssertionRecorder() override;

  [[nodiscard]] const std::vector<AssertionReport>& reports() const noexcept { return kept(); }

  /// The descriptions alone, in order.
  [[nodiscard]] std::vector<std::string> descriptions() const;

  /// The reports so far; the record is empty afterwards.
  std::vector<AssertionReport> takeReports() noexcept { return takeKept(); }

 protected:
  void record(AssertionReport report) override { keep(std::move(report)); }
};

}  // namespace zt

/// Reports at the line of the call: operation, object, source file, format, arguments of the format.
#define ZT_REPORT(operation, object, sourceFile, ...) \
  ZT_REPORT_ABOUT(nullptr, operation, object, sourceFile, __VA_ARGS__)

/// The same about another object than the one that reports.
#define ZT_REPORT_ABOUT(subject, operation, object, sourceFile, ...) \
  ::zt::ZTUAssertionHandler::currentHandler().handleFailure(         \
      ::zt::assertionReport((subject), (operation), (object), (sourceFile), __LINE__, ::zt::format(__VA_ARGS__)))
