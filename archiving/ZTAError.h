// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSException.h>
#include <platform/NSObject.h>

#include <cstddef>
#include <string>

namespace zt {

/// What went wrong in an archive, and where. Immutable.
class ZT_EXPORT ZTAError : public NSObject {
 public:
  /// The file may be empty (an archive in memory), the line 0 (unknown).
  static Ref<ZTAError> withMessage(std::string message, std::string file = {}, std::size_t line = 0);

  [[nodiscard]] const std::string& message() const noexcept { return mMessage; }
  [[nodiscard]] const std::string& file() const noexcept { return mFile; }
  [[nodiscard]] std::size_t line() const noexcept { return mLine; }

  /// "file:line: message", with what is unknown left out.
  std::string description() const override;

 protected:
  ZTAError(std::string message, std::string file, std::size_t line);
  ~ZTAError() override;

 private:
  std::string mMessage;
  std::string mFile;
  std::size_t mLine;
};

/// An error that says more about another one. Reads like its root error.
class ZT_EXPORT ZTAErrorWrapper : public ZTAError {
 public:
  /// None stands for an error of which nothing is known.
  static Ref<ZTAErrorWrapper> withRootError(Ref<ZTAError> error);

  /// The error that is wrapped, never none.
  [[nodiscard]] ZTAError& rootError() const noexcept { return *mRootError; }

 protected:
  explicit ZTAErrorWrapper(Ref<ZTAError> error);
  ~ZTAErrorWrapper() override;
  /// The error, or where there is none, one that says so.
  static Ref<ZTAError> known(Ref<ZTAError> error);

 private:
  Ref<ZTAError> mRootError;
};

/// What the archiver and its functions raise. The reason is the error's description.
class ZT_EXPORT ZTAArchiveException final : public NSException {
 public:
  explicit ZTAArchiveException(Ref<ZTAError> error, bool isHandled = false);
  ~ZTAArchiveException() override;

  ZTAArchiveException(const ZTAArchiveException&) noexcept = default;
  ZTAArchiveException& operator=(const ZTAArchiveException&) noexcept = default;

  [[nodiscard]] const Ref<ZTAError>& error() const noexcept { return mError; }
  /// Whether an error handler has had its say. Only the innermost one is asked: it knows most.
  [[nodiscard]] bool isHandled() const noexcept { return mIsHandled; }

 private:
  Ref<ZTAError> mError;
  bool mIsHandled;
};

}  // namespace zt
