// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <cstddef>
#include <vector>

namespace zt {

class NSTableView;

/// A column of a table, known by its identifier.
class ZT_EXPORT NSTableColumn final : public NSObject {
 public:
  explicit NSTableColumn(StringRef identifier) : mIdentifier(std::move(identifier)) {}

  [[nodiscard]] const StringRef& identifier() const noexcept { return mIdentifier; }

  const ZTClass& classObject() const override;
  static const ZTClass& tableColumnClass();

 private:
  StringRef mIdentifier;
};

/// What a table asks of whoever supplies its cells.
class ZT_EXPORT NSTableViewDataSource {
 public:
  virtual ~NSTableViewDataSource();

  /// The number of rows. The table may be none where the answer does not depend on it.
  virtual std::size_t numberOfRowsInTableView(const NSTableView* tableView) = 0;

  /// What the cell shows; none for an empty cell. The row is below the number of rows.
  virtual Ref<NSObject> tableViewObjectValueForTableColumnRow(const NSTableView* tableView, const NSTableColumn& column,
                                                              std::size_t row) = 0;
};

/// A table without a window: columns, and the questions that it puts to its data source.
class ZT_EXPORT NSTableView final : public NSObject {
 public:
  const ZTClass& classObject() const override;
  static const ZTClass& tableViewClass();

  [[nodiscard]] const std::vector<Ref<NSTableColumn>>& tableColumns() const noexcept { return mColumns; }
  void addTableColumn(Ref<NSTableColumn> column);

  /// Not owned: it must outlive the table or be replaced first. None for a table without rows.
  [[nodiscard]] NSTableViewDataSource* dataSource() const noexcept { return mDataSource; }
  void setDataSource(NSTableViewDataSource* source) noexcept { mDataSource = source; }

  /// Asks the data source; 0 without one.
  [[nodiscard]] std::size_t numberOfRows() const;

  /// Asks the data source for one cell. Raises `NSInvalidArgumentException` if the row or the column
  /// is not in the table, so that the data source is never asked for it.
  [[nodiscard]] Ref<NSObject> objectValueAtColumnRow(std::size_t column, std::size_t row) const;

 private:
  std::vector<Ref<NSTableColumn>> mColumns;
  NSTableViewDataSource* mDataSource = nullptr;  // cleared by whoever set it
};

}  // namespace zt
