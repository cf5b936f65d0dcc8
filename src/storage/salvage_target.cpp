#include "storage/salvage_target.h"

#include <fmt/format.h>

#include <utility>

#include "storage/store_check.h"

namespace orvanta {
namespace {

std::string insertInto(const TableShape& table) {
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const auto& column = table.columns[i];
    const auto* comma = i == 0 ? "" : ", ";
    names += comma + quotedName(column.name);
    // What an older file lacks gets the default, where nothing is not allowed.
    values += column.needed && !column.defaultValue.empty()
                  ? fmt::format("{}ifnull(?{}, {})", comma, i + 1, column.defaultValue)
                  : fmt::format("{}?{}", comma, i + 1);
  }
  return fmt::format("INSERT OR IGNORE INTO {}({}) VALUES ({})", quotedName(table.name), names,
                     values);
}

}  // namespace

SalvageTarget::SalvageTarget(std::filesystem::path file,
                             const std::function<bool(sqlite3* connection)>& prepareSchema)
    : file_(std::move(file)) {
  if (!makeNewFile(file_)) return;
  connection_ = FileConnection::writing(file_);
  // Until it is done nobody needs it.
  if (connection_) connection_.exec("PRAGMA synchronous=OFF");
  if (!connection_ || !prepareSchema(connection_.get())) {
    discard();
    return;
  }
  connection_.exec("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF");
  tables_ = tablesOf(connection_);
  // Says of a day's spans that they have not changed, which is not so when they were saved.
  std::erase_if(tables_, [](const TableShape& table) { return table.name == "indexed_days"; });
  good_ = connection_.exec("BEGIN") == SQLITE_OK;
  for (const auto& table : tables_) {
    connection_.exec(("DELETE FROM " + quotedName(table.name)).c_str());
    inserts_.emplace(table.name, Statement(connection_.get(), insertInto(table)));
    finds_.emplace(table.name,
                   Statement(connection_.get(), fmt::format("SELECT 1 FROM {} WHERE rowid = ?",
                                                            quotedName(table.name))));
    good_ = good_ && inserts_.at(table.name).ok() && finds_.at(table.name).ok();
  }
  if (!good_) discard();
}

SalvageTarget::Added SalvageTarget::add(const TableShape& table, std::optional<int64_t> rowid,
                                        Args values) {
  values.resize(table.columns.size());
  if (table.rowidColumn >= 0) values[static_cast<std::size_t>(table.rowidColumn)] = rowid;
  if (!table.sound(values)) return Added::kUnsound;
  if (!good_) return Added::kFailed;
  const int code = inserts_.at(table.name).visitRows(values, [](const Cursor&) {});
  if (code == SQLITE_DONE) {
    return sqlite3_changes(connection_.get()) > 0 ? Added::kYes : Added::kKnown;
  }
  if ((code & 0xff) == SQLITE_CONSTRAINT || (code & 0xff) == SQLITE_MISMATCH) {
    return Added::kUnsound;
  }
  good_ = false;
  return Added::kFailed;
}

bool SalvageTarget::has(const TableShape& table, int64_t rowid) {
  bool found = false;
  finds_.at(table.name).visitRows({rowid}, [&](const Cursor&) { found = true; });
  return found;
}

std::vector<int64_t> SalvageTarget::rowids(const TableShape& table) const {
  std::vector<int64_t> ids;
  connection_.each(fmt::format("SELECT rowid FROM {} ORDER BY rowid", quotedName(table.name)), {},
                   [&](const Cursor& row) { ids.push_back(row.int_(0).value_or(0)); });
  return ids;
}

int64_t SalvageTarget::count(const TableShape& table) const {
  return connection_.number("SELECT count(*) FROM " + quotedName(table.name));
}

bool SalvageTarget::finish() {
  good_ = good_ && connection_.exec("COMMIT") == SQLITE_OK;
  inserts_.clear();
  finds_.clear();
  connection_ = {};
  good_ = good_ && syncToDisk(file_) && checkStore(file_).whole;
  if (!good_) discard();
  return good_;
}

void SalvageTarget::discard() {
  good_ = false;
  inserts_.clear();
  finds_.clear();
  connection_ = {};
  removeDatabase(file_);
}

}  // namespace orvanta
