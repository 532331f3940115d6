// SPDX-License-Identifier: MIT
#include <inspection/HVStyleTableDataSource.h>
#include <inspection/HVStylesheetTableDataSource.h>
#include <tests/ztstyles/Scene.h>

namespace zt::testing {
namespace {

/// What a table shows in one row: "address=0x0 key=list"; an empty cell shows nothing.
std::string rowOf(NSTableViewDataSource& source, std::initializer_list<const char*> columns, std::size_t row) {
  const auto table = make<NSTableView>();
  std::string line;
  for (const char* column : columns) {
    const Ref<NSObject> cell =
        source.tableViewObjectValueForTableColumnRow(table.get(), *make<NSTableColumn>(StringRef(column)), row);
    line += (line.empty() ? "" : " ") + std::string(column) + "=" + (cell ? cell->description() : "");
  }
  return line;
}

TEST(HVStylesheetTableDataSourceTest, ShowsAddressesInOneRow) {
  Scene above;
  Scene scene(above.sheet.get());
  const auto source = make<HVStylesheetTableDataSource>();
  const auto shown = [&] { return rowOf(*source, {"address", "parentAddress", "size"}, 7); };
  const char* unknown = "size=size is not a known table column identifier";
  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 1u);
  EXPECT_EQ(shown(), format("address=0x0 parentAddress=0x0 %s", unknown));
  source->setStylesheet(scene.sheet);
  EXPECT_EQ(shown(), format("address=%p parentAddress=%p %s", scene.sheet, above.sheet, unknown));
  source->setStylesheet(above.sheet);
  EXPECT_EQ(shown(), format("address=%p parentAddress=0x0 %s", source->stylesheet(), unknown));
}

TEST(HVStyleTableDataSourceTest, ShowsOneRowForEachStyleWithTheFirstPropertyThatRefersToIt) {
  Scene scene;
  TestStyle& twice = scene.style("twice");
  TestStyle& inherited = scene.style({}, "twice");
  TestStyle& elsewhere = scene.style("elsewhere");
  TestAggregate& parent = scene.style<TestAggregate>("parent", {}, {{list, inherited}});
  TestAggregate& referencing = scene.style<TestAggregate>("r", "parent", {{label, twice}, {colour, elsewhere}});
  std::vector<Ref<ZTSStyle>> styles{Ref<ZTSStyle>(&twice), Ref<ZTSStyle>(&inherited), {}};
  const auto source = HVStyleTableDataSource::dataSourceWithStyles(styles);
  styles.clear();

  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 3u);
  EXPECT_EQ(rowOf(*source, {"class", "identifier", "address", "key"}, 0),
            format("class=TestStyle identifier=twice address=%p key=no key found", address(&twice)));
  source->setReferencingStyle(Ref<ZTSAggregateStyle>(&referencing));
  EXPECT_EQ(rowOf(*source, {"identifier", "key", ""}, 1),
            "identifier= key=list = is not a known table column identifier");  // by its effective value
  EXPECT_EQ(rowOf(*source, {"key"}, 0), "key=label");
  parent.p_setValueForProperty(Ref<NSObject>(&twice), list);
  EXPECT_EQ(rowOf(*source, {"key"}, 0), "key=list");
  for (const ZTSStyle* style : {static_cast<ZTSStyle*>(&elsewhere), static_cast<ZTSStyle*>(nullptr)})
    EXPECT_EQ(source->keyForReferencedStyle(style), "no key found");
  for (const std::size_t outside : {2, 3, -1}) {
    EXPECT_EQ(rowOf(*source, {"class", "key", "other"}, outside), "class= key= other=");
    EXPECT_EQ(source->styleAtIndex(outside), nullptr);
  }
  source->setStyle(Ref<ZTSStyle>(&inherited));
  EXPECT_EQ(source->styleAtIndex(0), &inherited);
  source->setStyle({});
  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 0u);
}

}  // namespace
}  // namespace zt::testing
