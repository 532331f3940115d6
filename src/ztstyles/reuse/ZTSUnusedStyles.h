// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSNotificationCenter.h>
#include <ztstyles/ZTSStyle.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <memory>
#include <vector>

namespace zt {

/// The styles of one stylesheet that nothing uses, so that a cleanup costs nothing for those that are used. Exists
/// while cleanup is enabled, and while a pass runs.
///
/// Always holds: every style that the stylesheet holds or that is linked to it, and whose usage count is 0, is
/// listed, and no style whose count is above 0. Made by one walk; then kept right by `ZTSStyle::p_setUsageCount`,
/// the stylesheet link and the stylesheet's own storing. While `mMissesSome`, because memory ran out, because the
/// registry was handed out, or because a style is held here and linked elsewhere, where its steps are told, a held
/// style may be missing; the next pass then looks at all styles. Owned by the stylesheet.
class ZTSUnusedStyles {
 public:
  explicit ZTSUnusedStyles(ZTSStylesheet& stylesheet);
  ~ZTSUnusedStyles();
  ZTSUnusedStyles(const ZTSUnusedStyles&) = delete;
  ZTSUnusedStyles& operator=(const ZTSUnusedStyles&) = delete;

  /// The style's usage count became 0 or ceased to be.
  void useChanged(ZTSStyle& style) noexcept;
  void styleEntered(ZTSStyle& style) noexcept;
  void styleLeft(ZTSStyle& style) noexcept { mStyles.removeObject(&style); }
  /// The stylesheet is about to store a style, or to take one out of its place.
  void willStore();
  void willRelease(const ZTSStyle& style) noexcept;

  void mayMissSome() noexcept { mMissesSome = true; }

  /// Listens for the closing of undo groups, from `listen` until it listens to another manager or none.
  void listen(NSUndoManager* undoManager);

  [[nodiscard]] bool isInPass() const noexcept { return mPass != nullptr; }

  /// The slow check of the sentence above. For tests.
  [[nodiscard]] bool check(const ZTSStylesheet& stylesheet) const;

  class Pass;

 private:
  void add(ZTSStyle& style) noexcept;
  void listHeldStyles();

  ZTSStylesheet& mStylesheet;  // owns this
  ZTUMutablePointerSet<ZTSStyle> mStyles;
  bool mMissesSome = false;
  Pass* mPass = nullptr;  // the innermost pass under way
  std::unique_ptr<NotificationListener> mListener;
};

/// One cleanup under way. `next` answers, in the order of a snapshot of all styles taken when the pass began, each
/// that is unused at its turn: also one that has become unused since, and none that has joined since. Styles that
/// the stylesheet holds no longer are passed over.
class ZTSUnusedStyles::Pass {
 public:
  explicit Pass(ZTSStylesheet& stylesheet);
  ~Pass();
  Pass(const Pass&) = delete;
  Pass& operator=(const Pass&) = delete;

  /// The next style to offer to the host; none at the end.
  Ref<ZTSStyle> next();

 private:
  friend class ZTSUnusedStyles;

  // A place in the snapshot: identified styles first, then by slot. 0 for none. See ZTSUnusedStyles.cpp.
  using Place = std::uint64_t;
  struct Visit {
    Place place;
    Ref<ZTSStyle> style;
    friend bool operator<(const Visit& left, const Visit& right) noexcept { return left.place > right.place; }
  };

  [[nodiscard]] Place currentPlaceOf(const ZTSStyle& style) const noexcept;
  [[nodiscard]] Place firstPlaceOf(const ZTSStyle& style) const noexcept;
  template <class Call>
  void forEachHeldStyle(Call call) const;
  void becameUnused(ZTSStyle& style);
  void writeDownAllPlaces();

  Ref<ZTSStylesheet> mStylesheet;
  Pass* mOuter;
  Place mReached = 0;
  std::vector<Visit> mFound;  // unused at the beginning, in order
  std::size_t mNextFound = 0;
  std::vector<Visit> mLater;  // unused since: a heap, the first on top
  bool mHasAllPlaces = false;
  boost::unordered_flat_map<const ZTSStyle*, Visit> mFirstPlaces;  // of styles that left their place; or of all
};

}  // namespace zt
