#include "storage/damaged_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace orvanta {
namespace {

constexpr int64_t kSmallestRow = 2;  // bytes

Args valuesOf(const Cursor& row) {
  Args values;
  for (int i = 1; i < row.columns(); ++i) values.push_back(row.value(i));
  return values;
}

}  // namespace

DamagedStore::DamagedStore(const std::filesystem::path& copy, std::stop_token stop)
    : stop_(std::move(stop)), connection_(FileConnection::writing(copy)) {
  if (!connection_) return;
  interrupter_ = std::make_unique<Interrupter>(connection_.get(), stop_);
  mostRows_ = static_cast<int64_t>(bytesOf(copy) + bytesOf(walOf(copy))) / kSmallestRow;
  // As it is: what cannot be understood of the schema is left out from then on, and a trigger that
  // is would not be missed.
  bool good = true;
  const int code = connection_.each("PRAGMA quick_check(1)", {},
                                    [&](const Cursor& row) { good = good && row.str(0) == "ok"; });
  whole_ = good && code == SQLITE_DONE;
  // SQLite then takes of a damaged schema what it can understand, and of a damaged page the rows
  // before the damage.
  sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
  connection_.exec("PRAGMA writable_schema=ON; PRAGMA cell_size_check=OFF; PRAGMA synchronous=OFF");
  // Nobody needs the copy afterwards.
  sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  for (const auto& table : tablesOf(connection_)) {
    auto& names = columns_[table.name];
    for (const auto& column : table.columns) names.push_back(column.name);
  }
}

// A column that the file does not have yet is empty. One in whose place the file has another of a
// name that no version knows is that one: damage has hit the name.
std::string DamagedStore::select(const TableShape& table, std::string_view rest) const {
  const auto& known = columns_.at(table.name);
  std::string sql = "SELECT rowid";
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const auto& name = table.columns[i].name;
    if (std::find(known.begin(), known.end(), name) != known.end()) {
      sql += ", " + quotedName(name);
    } else if (i < known.size() && table.column(known[i]) < 0) {
      sql += ", " + quotedName(known[i]);
    } else {
      sql += ", NULL";
    }
  }
  return fmt::format("{} FROM {} NOT INDEXED {}", sql, quotedName(table.name), rest);
}

bool DamagedStore::visit(const std::string& sql,
                         const std::function<void(const Cursor&)>& visit) const {
  int64_t rows = 0;
  const int code =
      connection_.each(fmt::format("{} LIMIT {}", sql, mostRows_), {}, [&](const Cursor& row) {
        ++rows;
        visit(row);
      });
  return code == SQLITE_DONE && rows < mostRows_;
}

bool DamagedStore::walk(const TableShape& table, const Take& take) {
  if (!has(table)) return false;
  auto highest = std::numeric_limits<int64_t>::min();
  const bool all = visit(select(table, "ORDER BY rowid"), [&](const Cursor& row) {
    const auto rowid = row.int_(0).value_or(0);
    highest = std::max(highest, rowid);
    take(rowid, valuesOf(row));
  });
  if (all || stopped()) return all;
  visit(select(table, fmt::format("WHERE rowid > {} ORDER BY rowid DESC", highest)),
        [&](const Cursor& row) { take(row.int_(0).value_or(0), valuesOf(row)); });
  return false;
}

void DamagedStore::lookUp(const TableShape& table, int64_t rowid, const Take& take) {
  if (!has(table)) return;
  if (lookUpTable_ != table.name) {
    lookUp_ = std::make_unique<Statement>(connection_.get(), select(table, "WHERE rowid = ?"));
    lookUpTable_ = table.name;
  }
  if (!lookUp_->ok()) return;
  lookUp_->visitRows({rowid}, [&](const Cursor& row) { take(rowid, valuesOf(row)); });
}

bool DamagedStore::walkIndex(const std::string& table, const std::string& column,
                             const std::string& index,
                             const std::function<void(int64_t rowid, double value)>& take) {
  const auto sql = fmt::format("SELECT rowid, {0} FROM {1} INDEXED BY {2} ORDER BY {0} ",
                               quotedName(column), quotedName(table), quotedName(index));
  const auto visitor = [&](const Cursor& row) { take(row.int_(0).value_or(0), row.dbl(1)); };
  if (visit(sql + "ASC", visitor)) return true;
  if (!stopped()) visit(sql + "DESC", visitor);
  return false;
}

}  // namespace orvanta
