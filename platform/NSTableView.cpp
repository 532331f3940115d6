// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/NSTableView.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

#include <utility>

namespace zt {

NSTableViewDataSource::~NSTableViewDataSource() = default;

const ZTClass& NSTableColumn::tableColumnClass() {
  static const ZTClass* object = new ZTClass("NSTableColumn", &nsObjectClass(), &typeid(NSTableColumn));
  return *object;
}

const ZTClass& NSTableColumn::classObject() const { return tableColumnClass(); }

const ZTClass& NSTableView::tableViewClass() {
  static const ZTClass* object = new ZTClassOf<NSTableView>("NSTableView", nsObjectClass());
  return *object;
}

const ZTClass& NSTableView::classObject() const { return tableViewClass(); }

void NSTableView::addTableColumn(Ref<NSTableColumn> column) {
  if (column == nullptr) throw NSInvalidArgumentException("addTableColumn: -- no column.");
  mColumns.push_back(std::move(column));
}

std::size_t NSTableView::numberOfRows() const {
  return mDataSource != nullptr ? mDataSource->numberOfRowsInTableView(this) : 0;
}

Ref<NSObject> NSTableView::objectValueAtColumnRow(std::size_t column, std::size_t row) const {
  if (column >= mColumns.size() || row >= numberOfRows()) {
    throw NSInvalidArgumentException(
        format("tableView:objectValueForTableColumn:row: -- no cell in column %d, row %d.", column, row));
  }
  return mDataSource->tableViewObjectValueForTableColumnRow(this, *mColumns[column], row);
}

}  // namespace zt
