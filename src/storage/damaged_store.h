// A damaged store's rows, as far as SQLite can still read them.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

#include "storage/file_connection.h"
#include "storage/interrupter.h"
#include "storage/table_shape.h"

namespace orvanta {

/// On a copy of a damaged file, of which it may change what SQLite changes when it opens one. Reads
/// any bytes without an end; a row that cannot be read ends a walk, not the next one.
class DamagedStore {
 public:
  /// The row's id and its values in the order of the shape's columns.
  using Take = std::function<void(int64_t rowid, const Args& values)>;

  DamagedStore(const std::filesystem::path& copy, std::stop_token stop);

  /// Nothing is wrong with the file as far as SQLite can tell.
  bool whole() const { return whole_; }
  bool stopped() const { return stop_.stop_requested(); }
  bool has(const TableShape& table) const { return columns_.contains(table.name); }

  /// Every row from the lowest id on, then, where that ends early, from the highest id down. True
  /// when all were read.
  bool walk(const TableShape& table, const Take& take);

  /// The row of this id, if it can be read.
  void lookUp(const TableShape& table, int64_t rowid, const Take& take);

  /// What an index on one column of numbers says: value and row id. True when it was read whole.
  bool walkIndex(const std::string& table, const std::string& column, const std::string& index,
                 const std::function<void(int64_t rowid, double value)>& take);

 private:
  std::string select(const TableShape& table, std::string_view rest) const;
  /// True when the rows ended by themselves.
  bool visit(const std::string& sql, const std::function<void(const Cursor&)>& visit) const;

  std::stop_token stop_;
  FileConnection connection_;
  std::unique_ptr<Interrupter> interrupter_;  // dies before the connection
  bool whole_ = false;
  int64_t mostRows_ = 0;  // that a file of this size can hold: damage can make circles
  std::map<std::string, std::vector<std::string>> columns_;  // by table
  std::string lookUpTable_;
  std::unique_ptr<Statement> lookUp_;  // of that table
};

}  // namespace orvanta
