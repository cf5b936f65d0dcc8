#include "storage/database.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "storage/schema.h"

namespace orvanta {
namespace {

bool expected(std::string_view message) {
  return message.find("duplicate column") != std::string_view::npos ||
         message.find("UNIQUE constraint") != std::string_view::npos;
}

}  // namespace

Database::Database(DataLocation where, Log log) : where_(std::move(where)), log_(std::move(log)) {
  prepare(where_, log_);
  connection_ =
      Connection(where_.file(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX);
  if (!connection_) log_("Orvanta: impossible d'ouvrir la base " + where_.file().string());
  // In a new file. Every write costs whole pages, and the end of the open span is written every ten
  // seconds: 1.8 MiB in a busy hour, where pages of 4096 bytes take 6.6. Long reads pay 13 % for
  // it.
  exec("PRAGMA page_size=1024");
  exec("PRAGMA journal_mode=WAL");
  exec("PRAGMA synchronous=NORMAL");
  exec("PRAGMA busy_timeout=5000");
  migrate(*this);
}

void Database::setErrorReport(ErrorReport report) {
  const std::lock_guard lock(reportMutex_);
  report_ = std::move(report);
}

void Database::report(const std::string& message) {
  ErrorReport report;
  {
    const std::lock_guard lock(reportMutex_);
    report = report_;
  }
  if (report) report("sql: " + message);
}

bool Database::worthTelling(int code) {
  switch (code & 0xff) {
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
    case SQLITE_CORRUPT:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
      return told_.insert(code & 0xff).second;
    default:
      return true;
  }
}

bool Database::exec(const std::string& sql) {
  std::string message;
  bool tell = false;
  {
    const std::lock_guard lock(mutex_);
    if (!connection_) return false;
    char* raw = nullptr;
    const int code = sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, &raw);
    const std::unique_ptr<char, decltype(&sqlite3_free)> text(raw, sqlite3_free);
    if (code == SQLITE_OK) return true;
    if (text) message = text.get();
    tell = text && worthTelling(code);
  }
  if (tell) {
    log_("Orvanta SQL: " + message);
    report(message);
  }
  return false;
}

int64_t Database::run(std::string_view sql, const Args& args) {
  std::string message;
  {
    const std::lock_guard lock(mutex_);
    auto* statement = connection_ ? connection_.prepared(sql) : nullptr;
    if (!statement) return -1;
    statement->bind(args);
    const int code = statement->step();
    if (code == SQLITE_ROW || code == SQLITE_DONE) {
      statement->reset();
      if (!told_.empty() && sqlite3_changes(connection_.get()) > 0) told_.clear();
      return sqlite3_last_insert_rowid(connection_.get());
    }
    message = sqlite3_errmsg(connection_.get());
    statement->reset();
    if (expected(message) || !worthTelling(code)) return -1;
  }
  log_(fmt::format("Orvanta SQL: {} — {}", message, sql));
  report(message);
  return -1;
}

void Database::each(std::string_view sql, const Args& args,
                    const std::function<void(const Cursor&)>& visit) {
  std::string message;
  {
    const std::lock_guard lock(mutex_);
    if (!connection_) return;
    if (auto* statement = connection_.prepared(sql)) {
      statement->visitRows(args, visit);
      return;
    }
    message = sqlite3_errmsg(connection_.get());
    if (!worthTelling(sqlite3_errcode(connection_.get()))) return;
  }
  log_(fmt::format("Orvanta SQL: {} — {}", message, sql));
}

void Database::scan(std::string_view sql, const Args& args,
                    const std::function<void(const Cursor&)>& visit) {
  int code = SQLITE_OK;
  std::string message;
  {
    const std::lock_guard lock(scanMutex_);
    // Our own lock is lock enough; SQLite would take its mutex for every column of every row.
    if (!scanner_) scanner_ = Connection(where_.file(), SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
    if (auto* statement = scanner_ ? scanner_.prepared(sql) : nullptr) {
      code = statement->visitRows(args, visit);
      if (code == SQLITE_DONE) return;
      message = sqlite3_errmsg(scanner_.get());
    }
  }
  if (code == SQLITE_OK) return each(sql, args, visit);
  {
    const std::lock_guard lock(mutex_);
    if (!worthTelling(code)) return;
  }
  log_(fmt::format("Orvanta SQL: {} — {}", message, sql));
}

void Database::releaseScanMemory() {
  const std::lock_guard lock(scanMutex_);
  scanner_ = {};
}

std::vector<Row> Database::query(std::string_view sql, const Args& args) {
  std::vector<Row> rows;
  std::shared_ptr<Row::Columns> columns;
  each(sql, args, [&](const Cursor& cursor) {
    const int count = cursor.columns();
    if (!columns) {
      columns = std::make_shared<Row::Columns>();
      for (int i = 0; i < count; ++i) columns->emplace_back(cursor.name(i));
    }
    std::vector<Value> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) values.push_back(cursor.value(i));
    rows.emplace_back(columns, std::move(values));
  });
  return rows;
}

int64_t Database::revision() {
  int64_t others = 0;
  each("PRAGMA data_version", {}, [&](const Cursor& row) { others = row.int_(0).value_or(0); });
  const std::lock_guard lock(mutex_);
  return connection_ ? others + sqlite3_total_changes64(connection_.get()) : 0;
}

std::string Database::setting(const std::string& key) {
  std::optional<std::string> stored;
  each("SELECT value FROM settings WHERE key=?", {key},
       [&](const Cursor& row) { stored = row.str(0); });
  if (stored) return *stored;
  const auto fallback = defaultSettings().find(key);
  return fallback != defaultSettings().end() ? fallback->second : std::string();
}

void Database::setSetting(const std::string& key, const std::string& value) {
  run("INSERT OR REPLACE INTO settings(key, value) VALUES (?, ?)", {key, value});
}

std::map<std::string, std::string> Database::allSettings() {
  auto settings = defaultSettings();
  each("SELECT key, value FROM settings", {}, [&](const Cursor& row) {
    const auto key = row.str(0);
    const auto value = row.str(1);
    if (key && value) settings[std::string(*key)] = *value;
  });
  return settings;
}

}  // namespace orvanta
