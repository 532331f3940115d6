#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

class ZTSUnusedStyles {
 public:
  void useChanged(ZTSStyle& style);
  void styleEntered(ZTSStyle& style);
  void styleLeft(ZTSStyle& style) noexcept;
  [[nodiscard]] bool check(const ZTSStylesheet& stylesheet) const;
};

}  // namespace zt
