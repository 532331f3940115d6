// SPDX-License-Identifier: MIT
#include <platform/NSException.h>

#include <utility>

namespace zt {

NSException::NSException(std::string name, std::string reason) {
  std::string whole = name + ": " + reason;
  mText = std::make_shared<const Text>(Text{std::move(name), std::move(reason), std::move(whole)});
}

NSInternalInconsistencyException::NSInternalInconsistencyException(std::string reason)
    : NSException("NSInternalInconsistencyException", std::move(reason)) {}

NSInvalidArgumentException::NSInvalidArgumentException(std::string reason)
    : NSException("NSInvalidArgumentException", std::move(reason)) {}

NSGenericException::NSGenericException(std::string reason) : NSException("NSGenericException", std::move(reason)) {}

// Out of line, so that each class has one home for its type information.
NSException::~NSException() = default;
NSInternalInconsistencyException::~NSInternalInconsistencyException() = default;
NSInvalidArgumentException::~NSInvalidArgumentException() = default;
NSGenericException::~NSGenericException() = default;

}  // namespace zt
