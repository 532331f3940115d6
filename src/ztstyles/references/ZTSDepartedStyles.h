// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

namespace zt {

/// The styles that have left one stylesheet and that may be kept alive by nothing but a circle of values, so that it
/// can free them when it ends: aggregates, and others that hold styles as values.
///
/// Always equals: the styles whose link to the stylesheet was cleared, in the order in which they left, without those
/// that have entered a stylesheet since or have died. They are not held. A style is in one list at most (its mark
/// `isDeparted`); which one, a table of the process knows, since few styles are ever in any. A style that has left
/// belongs to the thread of the stylesheet that it left until it enters another, which may be another thread's: the
/// lock of the table is held wherever a list is read or changed.
class ZTSDepartedStyles {
 public:
  ZTSDepartedStyles() = default;
  ~ZTSDepartedStyles() { forgetAll(); }
  ZTSDepartedStyles(const ZTSDepartedStyles&) = delete;
  ZTSDepartedStyles& operator=(const ZTSDepartedStyles&) = delete;

  /// Whether a style has to be listed when it leaves.
  static bool concerns(const ZTSStyle& style);
  /// Lists a style that leaves. Without memory nothing changes.
  void add(ZTSStyle& style);
  /// Takes the style out of whichever list it is in.
  static void forget(ZTSStyle& style) noexcept;
  void forgetAll() noexcept;

  /// The slow check of the sentence above. For tests.
  [[nodiscard]] bool check() const;
  [[nodiscard]] bool isEmpty() const noexcept;
  /// Those that are alive, in order.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> retainedStyles() const;

 private:
  ZTUMutablePointerSet<ZTSStyle> mStyles;
};

}  // namespace zt
