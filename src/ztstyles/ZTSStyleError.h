// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAError.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

/// An error of an archive with the style in which it arose.
class ZT_EXPORT ZTSStyleError final : public ZTAErrorWrapper {
 public:
  /// Wraps the root of `error` where that is itself an error of a style, so that they never nest. The style is
  /// held; either may be none.
  static Ref<ZTSStyleError> withRootErrorStyle(Ref<ZTAError> error, Ref<ZTSStyle> style);

  [[nodiscard]] ZTSStyle* style() const noexcept { return mStyle.get(); }
  /// The root error's text, and which style.
  std::string description() const override;

 private:
  ZTSStyleError(Ref<ZTAError> error, Ref<ZTSStyle> style);
  ~ZTSStyleError() override;

  Ref<ZTSStyle> mStyle;
};

}  // namespace zt
