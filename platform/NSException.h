// SPDX-License-Identifier: MIT
#pragma once

#include <platform/ZTExport.h>

#include <exception>
#include <memory>
#include <string>

namespace zt {

/// What an operation raises when it must not go on: a name, by which a program tells the kinds
/// apart, and a reason, which a person reads. One class per name, so that a handler can catch one
/// kind or all of them. Copying never throws.
class ZT_EXPORT NSException : public std::exception {
 public:
  NSException(std::string name, std::string reason);
  ~NSException() override;

  NSException(const NSException&) noexcept = default;
  NSException& operator=(const NSException&) noexcept = default;

  /// The name of the kind, such as "NSGenericException".
  [[nodiscard]] const std::string& name() const noexcept { return mText->name; }

  /// The sentence for a person, exactly as it was raised.
  [[nodiscard]] const std::string& reason() const noexcept { return mText->reason; }

  /// "name: reason".
  [[nodiscard]] const char* what() const noexcept override { return mText->whole.c_str(); }

 private:
  struct Text {
    std::string name;
    std::string reason;
    std::string whole;
  };
  std::shared_ptr<const Text> mText;
};

/// The state of the model forbids the operation.
class ZT_EXPORT NSInternalInconsistencyException final : public NSException {
 public:
  explicit NSInternalInconsistencyException(std::string reason);
  ~NSInternalInconsistencyException() override;
};

/// An argument cannot be what it is.
class ZT_EXPORT NSInvalidArgumentException final : public NSException {
 public:
  explicit NSInvalidArgumentException(std::string reason);
  ~NSInvalidArgumentException() override;
};

/// Anything else, such as an archive element that cannot be used.
class ZT_EXPORT NSGenericException final : public NSException {
 public:
  explicit NSGenericException(std::string reason);
  ~NSGenericException() override;
};

}  // namespace zt
