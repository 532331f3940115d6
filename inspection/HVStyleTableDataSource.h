// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSTableView.h>
#include <ztstyles/ZTSAggregateStyle.h>

#include <vector>

namespace zt {

/// Shows a list of styles, one row each. Columns: `class`, `identifier`, `address` and `key`, the property under which
/// a certain aggregate refers to the style; any other shows a text that says so.
class ZT_EXPORT HVStyleTableDataSource final : public NSObject, public NSTableViewDataSource {
 public:
  static const ZTClass& dataSourceClass();
  const ZTClass& classObject() const override;

  /// A new source that shows these styles.
  static Ref<HVStyleTableDataSource> dataSourceWithStyles(std::vector<Ref<ZTSStyle>> styles);
  HVStyleTableDataSource() = default;
  explicit HVStyleTableDataSource(std::vector<Ref<ZTSStyle>> styles) { setStyles(std::move(styles)); }

  /// The styles shown, in row order, held by this source. A list of its own: later changes of the one that was handed
  /// in do not reach it. A gap in the list is a row of empty cells.
  [[nodiscard]] const std::vector<Ref<ZTSStyle>>& styles() const noexcept { return mStyles; }
  void setStyles(std::vector<Ref<ZTSStyle>> styles) { mStyles = std::move(styles); }
  /// Shows one style, or nothing where there is none.
  void setStyle(Ref<ZTSStyle> style);

  /// The aggregate whose references give the `key` column, held by this source; none at first.
  [[nodiscard]] ZTSAggregateStyle* referencingStyle() const noexcept { return mReferencingStyle.get(); }
  void setReferencingStyle(Ref<ZTSAggregateStyle> style) noexcept { mReferencingStyle = std::move(style); }

  /// The first referenced-style property, in their order, whose effective value on the referencing style is this very
  /// style; "no key found" where there is none, or no referencing style.
  [[nodiscard]] StringRef keyForReferencedStyle(const ZTSStyle* style) const;

  /// Borrowed until the list changes; none for an index outside the list.
  [[nodiscard]] ZTSStyle* styleAtIndex(std::size_t index) const noexcept;

  std::size_t numberOfRowsInTableView(const NSTableView* tableView) override;
  /// `class` answers the class object, which prints as its name; `identifier` none for an anonymous style; the others
  /// a text. None for a row outside the list.
  Ref<NSObject> tableViewObjectValueForTableColumnRow(const NSTableView* tableView, const NSTableColumn& column,
                                                      std::size_t row) override;

 private:
  std::vector<Ref<ZTSStyle>> mStyles;
  Ref<ZTSAggregateStyle> mReferencingStyle;
};

}  // namespace zt
