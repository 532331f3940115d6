// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

#include <boost/unordered/unordered_flat_map.hpp>

namespace zt {

/// One stylesheet's styles that name a parent and have none, filed under the identifier that they miss, so
/// that adding an identified style asks those alone that wait for it.
///
/// Always equals: every style linked to the stylesheet that has a parent identifier and no parent is either
/// filed under that identifier (state bit kFiledAsOrphan), because its last resolution found nothing, or is
/// listed as untried (kUntried), because it was never resolved since something about it changed or because its
/// class resolves parents in its own way. Nothing else is listed. Owned by the stylesheet; updated by
/// `ZTSStyle::p_updateParent`, the primitives of the parent identifier and of the stylesheet link, and the
/// style's destructor.
class ZTSOrphanIndex {
 public:
  void file(ZTSStyle& style);
  void fileUntried(ZTSStyle& style);
  /// Takes the style out of whichever list it is in.
  void unfile(ZTSStyle& style) noexcept;

  /// The styles to try when `identifier` may have become findable. Not in any order.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> candidatesFor(const StringRef& identifier) const;

  [[nodiscard]] bool isEmpty() const noexcept { return mMissing.empty() && mUntried.isEmpty(); }
  /// The slow check: whether exactly the held styles that have no parent but name one are listed, each rightly.
  [[nodiscard]] bool check(const ZTSStyleSet& held) const;

 private:
  boost::unordered_flat_map<StringRef, ZTUMutablePointerSet<ZTSStyle>, StringRefHash> mMissing;
  ZTUMutablePointerSet<ZTSStyle> mUntried;
};

}  // namespace zt
