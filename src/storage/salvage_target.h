// The new file that takes up what was saved.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "storage/coverage.h"
#include "storage/file_connection.h"
#include "storage/table_shape.h"

namespace orvanta {

/// A store in the making: empty tables, then rows, then done. Nothing of it is durable before.
class SalvageTarget {
 public:
  enum class Added { kYes, kKnown, kUnsound, kFailed };

  /// Makes the file, which only the user may read. `prepareSchema` creates the tables on the empty
  /// file; rows that it puts into them are removed again.
  SalvageTarget(std::filesystem::path file,
                const std::function<bool(sqlite3* connection)>& prepareSchema);

  /// False when it could not be made.
  explicit operator bool() const { return good_; }
  const std::vector<TableShape>& tables() const { return tables_; }

  /// `values` in the order of the columns; the row id counts, where the table has one of its own,
  /// and is a new one when absent. What is there already stays. kFailed when the disk takes no
  /// more: nothing will be good then.
  Added add(const TableShape& table, std::optional<int64_t> rowid, Args values);

  bool has(const TableShape& table, int64_t rowid);
  std::vector<int64_t> rowids(const TableShape& table) const;
  int64_t count(const TableShape& table) const;
  Coverage coverage() const { return coverageOf(connection_); }

  /// Writes everything to the disk. True when the file is a whole store.
  bool finish();
  void discard();

 private:
  std::filesystem::path file_;
  FileConnection connection_;
  bool good_ = false;
  std::vector<TableShape> tables_;
  std::map<std::string, Statement> inserts_;
  std::map<std::string, Statement> finds_;
};

}  // namespace orvanta
