#include <support/ZTUAssertionHandler.h>

#include <cstdio>
#include <utility>

namespace zt {

namespace {

thread_local ZTUAssertionHandler* tCurrent = nullptr;

}  // namespace

ZTUAssertionHandler::~ZTUAssertionHandler() = default;

ZTUAssertionHandler& ZTUAssertionHandler::currentHandler() noexcept {
  static ZTUAssertionHandler* standard = new ZTUAssertionHandler;  // outlives every static
  return tCurrent != nullptr ? *tCurrent : *standard;
}

void ZTUAssertionHandler::handleFailureInMethod(std::string_view operation, const void* object,
                                                std::string_view sourceFile, int line, std::string description) {
  handleFailure(assertionReport(nullptr, operation, object, sourceFile, line, std::move(description)));
}

void ZTUAssertionHandler::handleFailure(AssertionReport report) { record(std::move(report)); }

void ZTUAssertionHandler::record(AssertionReport report) {
  const std::string line = report.text() + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);  // in one call: lines of several threads do not mix
}

ZTUAssertionHandler::Scope::Scope(ZTUAssertionHandler& handler) noexcept
    : mPrevious(std::exchange(tCurrent, &handler)) {}

ZTUAssertionHandler::Scope::~Scope() { tCurrent = mPrevious; }

ZTUAssertionRecorder::~ZTUAssertionRecorder() = default;

std::vector<std::string> ZTUAssertionRecorder::descriptions() const {
  std::vector<std::string> result;
  result.reserve(mReports.size());
  for (const AssertionReport& report : mReports) result.push_back(report.description);
  return result;
}

}  // namespace zt
