// SPDX-License-Identifier: MIT
#include <inspection/HVStylesheetTableDataSource.h>
#include <platform/ZTFormat.h>

namespace zt {

const ZTClass& HVStylesheetTableDataSource::dataSourceClass() {
  static const auto* object =
      new ZTClassOf<HVStylesheetTableDataSource>("HVStylesheetTableDataSource", NSObject::nsObjectClass());
  return *object;
}

const ZTClass& HVStylesheetTableDataSource::classObject() const { return dataSourceClass(); }

std::size_t HVStylesheetTableDataSource::numberOfRowsInTableView(const NSTableView*) { return 1; }

Ref<NSObject> HVStylesheetTableDataSource::tableViewObjectValueForTableColumnRow(const NSTableView*,
                                                                                 const NSTableColumn& column,
                                                                                 std::size_t) {
  const std::string_view identifier = column.identifier().view();
  if (identifier == "address") return NSString::make(format("%p", mStylesheet));
  if (identifier == "parentAddress") return NSString::make(format("%p", mStylesheet ? mStylesheet->parent() : nullptr));
  return NSString::make(format("%@ is not a known table column identifier", column.identifier()));
}

}  // namespace zt
