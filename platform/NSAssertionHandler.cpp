#include <platform/NSAssertionHandler.h>
#include <platform/NSException.h>

#include <utility>

namespace zt {

namespace {

thread_local NSAssertionHandler* tCurrent = nullptr;

}  // namespace

std::string AssertionReport::text() const {
  return singleLine(format("%@:%d: %@ <%p>: %@", sourceFile, line, operation, object, description));
}

NSAssertionHandler::~NSAssertionHandler() = default;

NSAssertionHandler& NSAssertionHandler::currentHandler() noexcept {
  static NSAssertionHandler* standard = new NSAssertionHandler;  // outlives every static
  return tCurrent != nullptr ? *tCurrent : *standard;
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

NSAssertionHandler::Scope::Scope(NSAssertionHandler& handler) noexcept : mPrevious(std::exchange(tCurrent, &handler)) {}

NSAssertionHandler::Scope::~Scope() { tCurrent = mPrevious; }

}  // namespace zt
