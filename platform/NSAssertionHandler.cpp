// SPDX-License-Identifier: MIT
#include <platform/NSAssertionHandler.h>
#include <platform/NSException.h>

#include <utility>

namespace zt {

std::string AssertionReport::text() const {
  return singleLine(format("%@:%d: %@ <%p>: %@", sourceFile, line, operation, object, description));
}

NSAssertionHandler::~NSAssertionHandler() = default;

template <>
NSAssertionHandler*& ZTReplaceable<NSAssertionHandler>::replacement() noexcept {
  thread_local NSAssertionHandler* current = nullptr;
  return current;
}

template <>
NSAssertionHandler& ZTReplaceable<NSAssertionHandler>::standard() noexcept {
  static NSAssertionHandler* standard = new NSAssertionHandler;
  return *standard;
}

void NSAssertionHandler::handleFailureInMethod(std::string_view operation, const void* object,
                                               std::string_view sourceFile, int line, std::string description) {
  handleFailure(assertionReport(nullptr, operation, object, sourceFile, line, std::move(description)));
}

void NSAssertionHandler::handleFailure(AssertionReport report) {
  willRaise(report);
  throw NSInternalInconsistencyException(std::move(report.description));
}

void NSAssertionHandler::willRaise(const AssertionReport&) {}

}  // namespace zt
