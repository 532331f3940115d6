// SPDX-License-Identifier: MIT
#include <archiving/ZTAError.h>

#include <utility>

namespace zt {

ZTAError::ZTAError(std::string message, std::string file, std::size_t line)
    : mMessage(std::move(message)), mFile(std::move(file)), mLine(line) {}
ZTAError::~ZTAError() = default;

Ref<ZTAError> ZTAError::withMessage(std::string message, std::string file, std::size_t line) {
  return Ref<ZTAError>(new ZTAError(std::move(message), std::move(file), line));
}

std::string ZTAError::description() const {
  std::string text = mFile;
  if (mLine != 0) text += (text.empty() ? "line " : ":") + std::to_string(mLine);
  if (!text.empty()) text += ": ";
  return text + mMessage;
}

ZTAErrorWrapper::ZTAErrorWrapper(Ref<ZTAError> error)
    : ZTAError(error->message(), error->file(), error->line()), mRootError(std::move(error)) {}
ZTAErrorWrapper::~ZTAErrorWrapper() = default;

Ref<ZTAErrorWrapper> ZTAErrorWrapper::withRootError(Ref<ZTAError> error) {
  return Ref<ZTAErrorWrapper>(new ZTAErrorWrapper(known(std::move(error))));
}

Ref<ZTAError> ZTAErrorWrapper::known(Ref<ZTAError> error) {
  return error ? error : ZTAError::withMessage("nothing is known of this error");
}

ZTAArchiveException::ZTAArchiveException(Ref<ZTAError> error, bool isHandled)
    : NSException("ZTAArchiveException", error->description()), mError(std::move(error)), mIsHandled(isHandled) {}
ZTAArchiveException::~ZTAArchiveException() = default;

}  // namespace zt
