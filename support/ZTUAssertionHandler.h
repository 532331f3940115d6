#pragma once

#include <platform/NSAssertionHandler.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zt {

/// The handler for programming errors after which an operation goes on or returns unchanged: it
/// records the failure and returns to the caller. It never stops the program.
///
/// Each thread has a current handler. The standard one prints one line to the error stream; a scope
/// replaces it, which is how tests and tools read reports. Call it through `ZT_REPORT`.
class ZT_EXPORT ZTUAssertionHandler {
 public:
  ZTUAssertionHandler() = default;
  ZTUAssertionHandler(const ZTUAssertionHandler&) = delete;
  ZTUAssertionHandler& operator=(const ZTUAssertionHandler&) = delete;
  virtual ~ZTUAssertionHandler();

  /// The handler of this thread.
  static ZTUAssertionHandler& currentHandler() noexcept;

  /// Hands the failure to `record` and returns. An exception of `record` is passed on, so that an
  /// application may choose to stop at the first failure.
  void handleFailureInMethod(std::string_view operation, const void* object, std::string_view sourceFile, int line,
                             std::string description);
  /// The same with the whole report.
  void handleFailure(AssertionReport report);

  /// Makes a handler the current one of this thread while the scope lives. Scopes nest.
  class ZT_EXPORT Scope {
   public:
    explicit Scope(ZTUAssertionHandler& handler) noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    ZTUAssertionHandler* mPrevious;
  };

 protected:
  /// Hook: what to do with a failure. The base prints its text.
  virtual void record(AssertionReport report);
};

/// Collects the failures that are reported on this thread while it lives, instead of printing them.
class ZT_EXPORT ZTUAssertionRecorder final : public ZTUAssertionHandler {
 public:
  ZTUAssertionRecorder() : mScope(*this) {}
  ~ZTUAssertionRecorder() override;

  [[nodiscard]] const std::vector<AssertionReport>& reports() const noexcept { return mReports; }

  /// The descriptions alone, in order.
  [[nodiscard]] std::vector<std::string> descriptions() const;

  /// The reports so far; the record is empty afterwards.
  std::vector<AssertionReport> takeReports() { return std::exchange(mReports, {}); }

 protected:
  void record(AssertionReport report) override { mReports.push_back(std::move(report)); }

 private:
  std::vector<AssertionReport> mReports;
  Scope mScope;
};

}  // namespace zt

/// Reports at the line of the call: operation, object, source file, format, arguments of the format.
#define ZT_REPORT(operation, object, sourceFile, ...) \
  ZT_REPORT_ABOUT(nullptr, operation, object, sourceFile, __VA_ARGS__)

/// The same about another object than the one that reports.
#define ZT_REPORT_ABOUT(subject, operation, object, sourceFile, ...) \
  ::zt::ZTUAssertionHandler::currentHandler().handleFailure(         \
      ::zt::assertionReport((subject), (operation), (object), (sourceFile), __LINE__, ::zt::format(__VA_ARGS__)))
