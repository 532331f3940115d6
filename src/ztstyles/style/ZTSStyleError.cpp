// SPDX-License-Identifier: MIT
#include <platform/ZTFormat.h>
#include <ztstyles/ZTSStyleError.h>

#include <utility>

namespace zt {

ZTSStyleError::ZTSStyleError(Ref<ZTAError> error, Ref<ZTSStyle> style)
    : ZTAErrorWrapper(std::move(error)), mStyle(std::move(style)) {}
ZTSStyleError::~ZTSStyleError() = default;

Ref<ZTSStyleError> ZTSStyleError::withRootErrorStyle(Ref<ZTAError> error, Ref<ZTSStyle> style) {
  if (const auto* wrapped = dynamic_cast<const ZTSStyleError*>(error.get())) error = &wrapped->rootError();
  return Ref<ZTSStyleError>(new ZTSStyleError(known(std::move(error)), std::move(style)));
}

std::string ZTSStyleError::description() const {
  std::string text = rootError().description();
  if (!mStyle) return text;
  if (mStyle->isIdentified())
    return text + singleLine(format(" (in the style with identifier '%@')", mStyle->identifier()));
  if (mStyle->isNamed()) return text + singleLine(format(" (in the anonymous style named '%@')", mStyle->name()));
  return text + singleLine(format(" (in an anonymous style below '%@')", mStyle->parentIdentifier()));
}

}  // namespace zt
