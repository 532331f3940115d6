// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/ZTFormat.h>
#include <platform/ZTReplaceable.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zt {

/// A broken promise, as both assertion handlers are told of it.
struct AssertionReport {
  std::string operation;         ///< the keyword name, such as "addObserver:"
  const void* object = nullptr;  ///< the address only: the object may be gone when the report is read
  std::string sourceFile;        ///< the unit, such as "src/ztstyles/ZTSStyle"
  int line = 0;
  std::string description;
  /// The object that the description is about, held as long as the report: the one that reports, unless the call names
  /// another. None for nothing counted and for an object that is being made or destroyed.
  Ref<const NSObject> subject = {};

  /// "file:line: operation <address>: description", in one line that is safe on a terminal.
  [[nodiscard]] ZT_EXPORT std::string text() const;
};

/// The report of a failure at a line; what the two macros hand to the handlers.
template <class Object>
AssertionReport assertionReport(const NSObject* subject, std::string_view operation, Object object,
                                std::string_view sourceFile, int line, std::string description) {
  if constexpr (std::is_convertible_v<Object, const NSObject*>) {
    if (subject == nullptr) subject = object;
  }
  return {std::string(operation), object, std::string(sourceFile), line, std::move(description),
          retainIfAlive(subject)};
}

class NSAssertionHandler;
template <>
ZT_EXPORT NSAssertionHandler*& ZTReplaceable<NSAssertionHandler>::replacement() noexcept;
template <>
ZT_EXPORT NSAssertionHandler& ZTReplaceable<NSAssertionHandler>::standard() noexcept;

/// The handler for failures after which an operation must not go on: it raises
/// `NSInternalInconsistencyException` with the description as the reason.
///
/// Each thread has a current handler; a scope replaces it, so that a test or an application can see
/// a failure before it is raised. It is raised in any case. Call it through `ZT_RAISE`.
class ZT_EXPORT NSAssertionHandler : public ZTReplaceable<NSAssertionHandler> {
 public:
  virtual ~NSAssertionHandler();

  /// The handler of this thread.
  static NSAssertionHandler& currentHandler() noexcept { return current(); }

  /// Shows the failure to `willRaise`, then raises `NSInternalInconsistencyException`.
  [[noreturn]] void handleFailureInMethod(std::string_view operation, const void* object, std::string_view sourceFile,
                                          int line, std::string description);
  /// The same with the whole report.
  [[noreturn]] void handleFailure(AssertionReport report);

 protected:
  /// Hook: called before the exception is raised. The base does nothing.
  virtual void willRaise(const AssertionReport& report);
};

}  // namespace zt

/// Raises at the line of the call: operation, object, source file, format, arguments of the format.
#define ZT_RAISE(operation, object, sourceFile, ...) ZT_RAISE_ABOUT(nullptr, operation, object, sourceFile, __VA_ARGS__)

/// The same about another object than the one that raises.
#define ZT_RAISE_ABOUT(subject, operation, object, sourceFile, ...) \
  ::zt::NSAssertionHandler::currentHandler().handleFailure(         \
      ::zt::assertionReport((subject), (operation), (object), (sourceFile), __LINE__, ::zt::format(__VA_ARGS__)))
