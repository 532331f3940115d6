// SPDX-License-Identifier: MIT
#include <platform/NSLog.h>
#include <support/ZTUAssertionHandler.h>

#include <utility>

namespace zt {

ZTUAssertionHandler::~ZTUAssertionHandler() = default;

template <>
ZTUAssertionHandler*& ZTReplaceable<ZTUAssertionHandler>::replacement() noexcept {
  thread_local ZTUAssertionHandler* current = nullptr;
  return current;
}

template <>
ZTUAssertionHandler& ZTReplaceable<ZTUAssertionHandler>::standard() noexcept {
  static ZTUAssertionHandler* standard = new ZTUAssertionHandler;
  return *standard;
}

void ZTUAssertionHandler::handleFailureInMethod(std::string_view operation, const void* object,
                                                std::string_view sourceFile, int line, std::string description) {
  handleFailure(assertionReport(nullptr, operation, object, sourceFile, line, std::move(description)));
}

void ZTUAssertionHandler::handleFailure(AssertionReport report) { record(std::move(report)); }

void ZTUAssertionHandler::record(AssertionReport report) { writeErrorLine(report.text()); }

ZTUAssertionRecorder::~ZTUAssertionRecorder() = default;

std::vector<std::string> ZTUAssertionRecorder::descriptions() const {
  std::vector<std::string> result;
  result.reserve(kept().size());
  for (const AssertionReport& report : kept()) result.push_back(report.description);
  return result;
}

}  // namespace zt
