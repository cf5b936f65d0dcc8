#include "storage/database.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "storage/schema.h"

namespace orvanta {
namespace {

// The program speaks some dozens of statements; beyond this the cache holds text built on the fly.
constexpr std::size_t kMostStatements = 64;

bool expected(std::string_view message) {
  return message.find("duplicate column") != std::string_view::npos ||
         message.find("UNIQUE constraint") != std::string_view::npos;
}

// Holds SQLite's own mutex on the connection. Every step and column call takes it; taking it again
// is much cheaper than taking it, and a report makes millions of these calls.
class ConnectionMutex {
 public:
  explicit ConnectionMutex(sqlite3* connection) : mutex_(sqlite3_db_mutex(connection)) {
    sqlite3_mutex_enter(mutex_);
  }
  ~ConnectionMutex() { sqlite3_mutex_leave(mutex_); }
  ConnectionMutex(const ConnectionMutex&) = delete;
  ConnectionMutex& operator=(const ConnectionMutex&) = delete;

 private:
  sqlite3_mutex* mutex_;
};

}  // namespace

Database::Database(DataLocation where, Log log) : where_(std::move(where)), log_(std::move(log)) {
  prepare(where_, log_);
  open();
  exec("PRAGMA journal_mode=WAL");
  exec("PRAGMA synchronous=NORMAL");
  exec("PRAGMA busy_timeout=5000");
  migrate(*this);
}

void Database::open() {
  sqlite3* raw = nullptr;
  int code =
      sqlite3_open_v2(where_.file().c_str(), &raw,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
  connection_.reset(raw);
  if (code == SQLITE_OK) {
    // Opening reads nothing; only the first read shows whether this is a database at all.
    sqlite3_busy_timeout(raw, 5000);
    code = sqlite3_exec(raw, "PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK || code == SQLITE_BUSY) return;
  connection_.reset();
  log_("Orvanta: impossible d'ouvrir la base " + where_.file().string());
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

Statement* Database::prepared(std::string_view sql) {
  if (const auto found = statements_.find(sql); found != statements_.end()) return &found->second;
  Statement statement(connection_.get(), sql);
  if (!statement.ok()) return nullptr;
  if (statements_.size() >= kMostStatements) statements_.clear();
  return &statements_.emplace(sql, std::move(statement)).first->second;
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
    auto* statement = connection_ ? prepared(sql) : nullptr;
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
    if (auto* statement = prepared(sql)) {
      statement->bind(args);
      const auto cursor = statement->cursor();
      const ConnectionMutex held(connection_.get());
      while (statement->step() == SQLITE_ROW) visit(cursor);
      statement->reset();
      return;
    }
    message = sqlite3_errmsg(connection_.get());
    if (!worthTelling(sqlite3_errcode(connection_.get()))) return;
  }
  log_(fmt::format("Orvanta SQL: {} — {}", message, sql));
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
