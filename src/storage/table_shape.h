// What the rows of a table look like.
#pragma once

#include <string>
#include <vector>

#include "storage/file_connection.h"
#include "storage/value.h"

namespace orvanta {

/// A table by its columns, so that a row can be told from another table's where nothing says to
/// which it belongs.
struct TableShape {
  enum class Kind { kAny, kInteger, kReal, kText };
  struct Column {
    std::string name;
    Kind kind = Kind::kAny;
    bool needed = false;       ///< NOT NULL
    std::string defaultValue;  ///< as SQL; empty for none
  };

  std::string name;
  std::vector<Column> columns;
  int rowidColumn = -1;  ///< the INTEGER PRIMARY KEY, which the record itself leaves out; or -1

  int column(std::string_view wanted) const;

  /// Whether `record`, as it lies in the file, may be a row of this table. Columns that were added
  /// later may be missing at its end.
  bool fits(const Args& record) const;

  /// Whether a row (values in the order of the columns) can be meant: a span has finite times and
  /// ends no earlier than it starts.
  bool sound(const Args& row) const;
};

/// Those of the file's tables, without SQLite's own.
std::vector<TableShape> tablesOf(const FileConnection& connection);

}  // namespace orvanta
