#include <inspection/HVStyleTableDataSource.h>
#include <inspection/HVStylesheetTableDataSource.h>
#include <tests/ztstyles/Scene.h>

namespace zt::testing {
namespace {

/// What a table shows in one row: "address=0x0 key=list"; an empty cell shows nothing.
std::string rowOf(NSTableViewDataSource& source, std::initializer_list<const char*> columns, std::size_t row) {
  std::string line;
  for (const char* identifier : columns) {
    const Ref<NSObject> cell =
        source.tableViewObjectValueForTableColumnRow(nullptr, *make<NSTableColumn>(StringRef(identifier)), row);
    line += (line.empty() ? "" : " ") + std::string(identifier) + "=" + (cell ? cell->description() : "");
  }
  return line;
}

TEST(HVStylesheetTableDataSourceTest, ShowsAddressesInOneRow) {
  Scene above;
  Scene scene(above.sheet.get());
  const auto source = make<HVStylesheetTableDataSource>();
  const auto shown = [&] { return rowOf(*source, {"address", "parentAddress", "size"}, 7); };

  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 1u);
  EXPECT_EQ(shown(), "address=0x0 parentAddress=0x0 size=size is not a known table column identifier");
  source->setStylesheet(scene.sheet);
  EXPECT_EQ(shown(), format("address=%p parentAddress=%p size=size is not a known table column identifier", scene.sheet,
                            above.sheet));
  source->setStylesheet(above.sheet);
  EXPECT_EQ(rowOf(*source, {"parentAddress"}, 0), "parentAddress=0x0");
  EXPECT_EQ(source->stylesheet(), above.sheet.get());
}

TEST(HVStyleTableDataSourceTest, ShowsOneRowForEachStyle) {
  Scene scene;
  TestStyle& body = scene.style("body");
  TestStyle& anonymous = scene.style({}, "body");
  std::vector<Ref<ZTSStyle>> styles{Ref<ZTSStyle>(&body), Ref<ZTSStyle>(&anonymous), {}};
  const auto source = HVStyleTableDataSource::dataSourceWithStyles(styles);
  styles.clear();

  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 3u);
  EXPECT_EQ(rowOf(*source, {"class", "identifier", "address", "key"}, 0),
            format("class=TestStyle identifier=body address=%p key=no key found", address(&body)));
  EXPECT_EQ(rowOf(*source, {"identifier", "address", ""}, 1),
            format("identifier= address=%p = is not a known table column identifier", address(&anonymous)));
  for (const std::size_t outside : {2, 3, -1}) {
    EXPECT_EQ(rowOf(*source, {"class", "key", "other"}, outside), "class= key= other=");
    EXPECT_EQ(source->styleAtIndex(outside), nullptr);
  }

  source->setStyle(Ref<ZTSStyle>(&anonymous));
  EXPECT_EQ(source->styleAtIndex(0), &anonymous);
  source->setStyle({});
  EXPECT_EQ(source->numberOfRowsInTableView(nullptr), 0u);
}

TEST(HVStyleTableDataSourceTest, NamesTheFirstPropertyThatRefersToAStyle) {
  Scene scene;
  TestStyle& twice = scene.style("twice");
  TestStyle& inherited = scene.style("inherited");
  TestStyle& elsewhere = scene.style("elsewhere");
  TestAggregate& parent = scene.style<TestAggregate>("parent", {}, {{list, inherited}});
  TestAggregate& referencing = scene.style<TestAggregate>("r", "parent", {{label, twice}, {colour, elsewhere}});

  const auto source = make<HVStyleTableDataSource>();
  source->setReferencingStyle(Ref<ZTSAggregateStyle>(&referencing));
  EXPECT_EQ(source->keyForReferencedStyle(&twice), "label");
  EXPECT_EQ(source->keyForReferencedStyle(&inherited), "list");  // by its effective value
  EXPECT_EQ(source->keyForReferencedStyle(&elsewhere), "no key found");
  EXPECT_EQ(source->keyForReferencedStyle(nullptr), "no key found");
  parent.p_setValueForProperty(Ref<NSObject>(&twice), list);
  EXPECT_EQ(source->keyForReferencedStyle(&twice), "list");

  // In a table, as an inspector would show it.
  const auto table = make<NSTableView>();
  for (const char* column : {"identifier", "key"}) table->addTableColumn(make<NSTableColumn>(StringRef(column)));
  table->setDataSource(source.get());
  source->setStyles({Ref<ZTSStyle>(&inherited), Ref<ZTSStyle>(&twice)});
  EXPECT_EQ(table->numberOfRows(), 2u);
  EXPECT_EQ(table->objectValueAtColumnRow(1, 1)->description(), "list");
}

}  // namespace
}  // namespace zt::testing
