// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

#include <boost/unordered/unordered_flat_map.hpp>

namespace zt {

/// One stylesheet's styles that name a parent and have none, filed under the identifier that they miss, so
/// that adding an identified style asks those alone that wait for it.
///
/// Always equals: every style linked to the stylesheet that has a parent identifier and no parent is either
/// filed under that identifier (mark isFiledAsOrphan), because its last resolution found nothing, or is
/// listed as untried (isUntried), because it was never resolved since something about it changed or because its
/// class resolves parents in its own way. Nothing else is listed. While `missesSome`, because memory ran out or the
/// parent of the stylesheet was stored without resolving anew, a style may be missing, or filed under an identifier
/// that it could find; the next retry asks all styles and lists them again. Owned by the stylesheet; updated by
/// `ZTSStyle::p_updateParent`, the primitives of the parent identifier and of the stylesheet link, and the
/// style's destructor.
class ZTSOrphanIndex {
 public:
  void file(ZTSStyle& style) noexcept;
  void fileUntried(ZTSStyle& style) noexcept;
  /// Takes the style out of whichever list it is in.
  void unfile(ZTSStyle& style) noexcept;

  /// The styles to try when `identifier` may have become findable. Not in any order.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> candidatesFor(const StringRef& identifier) const;

  [[nodiscard]] bool missesSome() const noexcept { return mMissesSome; }
  void mayMissSome() noexcept { mMissesSome = true; }
  /// A style could not be asked, or not be linked to what it found: the next change of the stylesheet asks all.
  void couldNotAsk() noexcept { mMissesSome = mIsUnfinished = true; }
  [[nodiscard]] bool isUnfinished() const noexcept { return mIsUnfinished; }
  /// A walk over all styles begins, which lists each that remains without parent.
  void listsAllAgain() noexcept { mMissesSome = mIsUnfinished = false; }

  [[nodiscard]] bool isEmpty() const noexcept { return mMissing.empty() && mUntried.isEmpty(); }
  /// The slow check: whether exactly the held styles that have no parent but name one are listed, each rightly.
  [[nodiscard]] bool check(const ZTSStyleSet& held) const;

 private:
  boost::unordered_flat_map<StringRef, ZTUMutablePointerSet<ZTSStyle>, StringRefHash> mMissing;
  ZTUMutablePointerSet<ZTSStyle> mUntried;
  bool mMissesSome = false;
  bool mIsUnfinished = false;
};

}  // namespace zt
