#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

class ZTSVariationIndexes {
 public:
  static void childWasAdded(ZTSStyle& parent, ZTSStyle& child);
  static void dropIndexOf(ZTSStyle& base) noexcept;
  [[nodiscard]] bool check(const ZTSStylesheet& stylesheet) const;
};

}  // namespace zt
