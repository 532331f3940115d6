// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSTableView.h>
#include <ztstyles/ZTSStylesheet.h>

namespace zt {

/// Shows one stylesheet as the single row of a table. Columns: `address` and `parentAddress`; any other shows a text
/// that says so. A missing stylesheet or parent shows the address of none, `0x0`.
class ZT_EXPORT HVStylesheetTableDataSource final : public NSObject, public NSTableViewDataSource {
 public:
  static const ZTClass& dataSourceClass();
  const ZTClass& classObject() const override;

  /// The stylesheet shown, held by this source; none at first.
  [[nodiscard]] ZTSStylesheet* stylesheet() const noexcept { return mStylesheet.get(); }
  void setStylesheet(Ref<ZTSStylesheet> stylesheet) noexcept { mStylesheet = std::move(stylesheet); }

  /// Always 1.
  std::size_t numberOfRowsInTableView(const NSTableView* tableView) override;
  /// The cell as text. The row plays no part.
  Ref<NSObject> tableViewObjectValueForTableColumnRow(const NSTableView* tableView, const NSTableColumn& column,
                                                      std::size_t row) override;

 private:
  Ref<ZTSStylesheet> mStylesheet;
};

}  // namespace zt
