// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <inspection/HVStyleTableDataSource.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace zt {

/// One table about a document, as an inspector window would show it: a heading and a table view with its data source.
struct ShownTable {
  std::string title;
  Ref<NSTableView> view;
  std::vector<Ref<NSObject>> sources;  ///< keeps what the view asks
};

/// The stylesheets of a document, the document's own first: one table for each stylesheet, one for its styles.
std::vector<ShownTable> tablesOfStylesheets(const Ref<ZTDocument>& document);

/// The styles that the style's own values refer to, each with the property that does.
ShownTable tableOfReferences(const Ref<ZTDocument>& document, OdfStyle& style);

/// The headings of a table and its cells as text, row by row.
std::vector<std::string> headingsOf(const ShownTable& table);
std::vector<std::vector<std::string>> rowsOf(const ShownTable& table);

/// The title, and an object for each row; an empty cell is null.
nlohmann::ordered_json tableAsJson(const ShownTable& table);

}  // namespace zt
