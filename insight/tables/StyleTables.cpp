// SPDX-License-Identifier: MIT
#include <insight/tables/StyleTables.h>

#include <inspection/HVStylesheetTableDataSource.h>

namespace zt {

namespace {

/// The library's table of styles with two more columns that only the document can fill: `label`, a name for people,
/// and `line`, where the style stands in its file.
class DocumentStyleSource final : public NSObject, public NSTableViewDataSource {
 public:
  DocumentStyleSource(Ref<ZTDocument> document, Ref<HVStyleTableDataSource> styles)
      : mDocument(std::move(document)), mStyles(std::move(styles)) {}

  std::size_t numberOfRowsInTableView(const NSTableView* view) override {
    return mStyles->numberOfRowsInTableView(view);
  }

  Ref<NSObject> tableViewObjectValueForTableColumnRow(const NSTableView* view, const NSTableColumn& column,
                                                      std::size_t row) override {
    const ZTSStyle* style = mStyles->styleAtIndex(row);
    const std::string_view identifier = column.identifier().view();
    if (style != nullptr && identifier == "label") {
      return style->isNamed() ? Ref<NSObject>(style->name().object())
                              : Ref<NSObject>(NSString::make(mDocument->labelOf(*style)));
    }
    if (style != nullptr && identifier == "line") {
      const StyleOrigin* origin = mDocument->originOf(*style);
      if (origin == nullptr || origin->line == 0) return {};
      const std::string line = std::to_string(origin->line);
      // A document of several parts is named by each; a flat one is the file that was asked for.
      const bool isFlat = mDocument->parts.size() < 2 || origin->part >= mDocument->parts.size();
      return NSString::make(isFlat ? line : mDocument->parts[origin->part].name + ':' + line);
    }
    return mStyles->tableViewObjectValueForTableColumnRow(view, column, row);
  }

 private:
  Ref<ZTDocument> mDocument;
  Ref<HVStyleTableDataSource> mStyles;
};

Ref<NSTableView> viewWith(std::initializer_list<const char*> columns, NSTableViewDataSource* source) {
  auto view = make<NSTableView>();
  for (const char* column : columns) view->addTableColumn(make<NSTableColumn>(StringRef(column)));
  view->setDataSource(source);
  return view;
}

ShownTable tableOfStylesheet(const std::string& title, ZTSStylesheet& stylesheet) {
  const auto source = make<HVStylesheetTableDataSource>();
  source->setStylesheet(Ref<ZTSStylesheet>(&stylesheet));
  return {title, viewWith({"address", "parentAddress"}, source.get()), {source}};
}

ShownTable tableOfStyles(const std::string& title, const Ref<ZTDocument>& document, ZTSStylesheet& stylesheet) {
  const auto styles = HVStyleTableDataSource::dataSourceWithStyles(stylesheet.retainedStyles());
  const auto source = make<DocumentStyleSource>(document, styles);
  return {title, viewWith({"class", "identifier", "label", "line", "address"}, source.get()), {source}};
}

}  // namespace

std::vector<ShownTable> tablesOfStylesheets(const Ref<ZTDocument>& document) {
  std::vector<ShownTable> tables;
  for (ZTSStylesheet* sheet = &document->stylesheet(); sheet != nullptr; sheet = sheet->parent()) {
    const std::string whose = sheet == &document->stylesheet() ? "the document"
                              : sheet == &document->defaults() ? "defaults"
                                                               : "an ancestor";
    tables.push_back(tableOfStylesheet("stylesheet of " + whose, *sheet));
    tables.push_back(tableOfStyles("styles of " + whose, document, *sheet));
  }
  return tables;
}

ShownTable tableOfReferences(const Ref<ZTDocument>& document, OdfStyle& style) {
  const std::optional<ZTSStyleSet> references = style.referencedStyles();
  const auto styles = HVStyleTableDataSource::dataSourceWithStyles(references ? references->retainedSnapshot()
                                                                              : std::vector<Ref<ZTSStyle>>());
  styles->setReferencingStyle(Ref<ZTSAggregateStyle>(&style));
  const auto source = make<DocumentStyleSource>(document, styles);
  return {"styles that " + document->labelOf(style) + " refers to",
          viewWith({"key", "class", "identifier", "label", "line", "address"}, source.get()),
          {source}};
}

std::vector<std::string> headingsOf(const ShownTable& table) {
  std::vector<std::string> headings;
  for (const Ref<NSTableColumn>& column : table.view->tableColumns()) headings.push_back(column->identifier().text());
  return headings;
}

std::vector<std::vector<std::string>> rowsOf(const ShownTable& table) {
  std::vector<std::vector<std::string>> rows(table.view->numberOfRows());
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < table.view->tableColumns().size(); ++column) {
      const Ref<NSObject> cell = table.view->objectValueAtColumnRow(column, row);
      rows[row].push_back(cell ? cell->description() : std::string());
    }
  }
  return rows;
}

nlohmann::ordered_json tableAsJson(const ShownTable& table) {
  const std::vector<std::string> headings = headingsOf(table);
  auto rows = nlohmann::ordered_json::array();
  for (std::size_t row = 0; row < table.view->numberOfRows(); ++row) {
    auto cells = nlohmann::ordered_json::object();
    for (std::size_t column = 0; column < headings.size(); ++column) {
      const Ref<NSObject> cell = table.view->objectValueAtColumnRow(column, row);
      cells[headings[column]] = cell ? nlohmann::ordered_json(cell->description()) : nlohmann::ordered_json();
    }
    rows.push_back(std::move(cells));
  }
  return {{"title", table.title}, {"rows", std::move(rows)}};
}

}  // namespace zt
