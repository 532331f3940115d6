// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <utility>

namespace zt {

/// The first of several failures. A walk that tells many goes on to the next when one of them throws, and throws what
/// the first one threw when all have been told:
///
///     ZTFirstFailure failure;
///     for (const Ref<ZTSStyle>& child : children) failure.attempt([&] { child->stylePropertiesChanged(change); });
///     failure.rethrow();
///
/// Costs nothing as long as nothing throws. One that goes without `rethrow` passes the failure over.
class ZTFirstFailure {
 public:
  /// Runs the step; whether it went through.
  template <class Step>
  bool attempt(Step&& step) noexcept {
    try {
      std::forward<Step>(step)();
      return true;
    } catch (...) {
      if (!mFirst) mFirst = std::current_exception();
      return false;
    }
  }

  [[nodiscard]] bool hasFailed() const noexcept { return mFirst != nullptr; }
  void rethrow() const {
    if (mFirst) std::rethrow_exception(mFirst);
  }

 private:
  std::exception_ptr mFirst;
};

}  // namespace zt
