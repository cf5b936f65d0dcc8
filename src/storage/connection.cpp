#include "storage/connection.h"

#include <fmt/format.h>

#include <utility>

namespace orvanta {
namespace {

// The program speaks some dozens of statements; beyond this the cache holds text built on the fly.
constexpr std::size_t kMostStatements = 64;
constexpr int kReportPatience = 2000;  // milliseconds
// KiB. Ticks touch a few pages. Two weeks, which a recap compares, are two to three megabytes, and
// an open dashboard asks for them again and again; only what was read is held.
constexpr auto kCache = "PRAGMA cache_size=-512";
constexpr auto kReportCache = "PRAGMA cache_size=-4096";

std::string withoutIndex(std::string_view sql) {
  constexpr std::string_view kHint = "INDEXED BY ";
  std::string plain(sql);
  const auto hint = plain.find(kHint);
  if (hint != std::string::npos) {
    plain.erase(hint, plain.find(' ', hint + kHint.size()) - hint);
  }
  return plain;
}

}  // namespace

Connection::Connection(const std::filesystem::path& file, int flags) {
  open(file.string(), flags);
}

Connection Connection::immutable(const std::filesystem::path& file) {
  // In a URI these have a meaning of their own.
  std::string uri = "file:";
  for (const char c : file.string()) {
    if (c == '%' || c == '?' || c == '#') {
      uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    } else {
      uri += c;
    }
  }
  Connection connection;
  connection.open(uri + "?immutable=1",
                  SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_FULLMUTEX);
  return connection;
}

void Connection::open(const std::string& name, int flags) {
  sqlite3* raw = nullptr;
  int code = sqlite3_open_v2(name.c_str(), &raw, flags, nullptr);
  handle_.reset(raw);
  if (code == SQLITE_OK) {
    const bool reports = (flags & SQLITE_OPEN_READONLY) != 0;
    sqlite3_extended_result_codes(raw, 1);
    // Memory set aside for compiling statements, which are compiled once and kept.
    sqlite3_db_config(raw, SQLITE_DBCONFIG_LOOKASIDE, nullptr, 0, 0);
    sqlite3_busy_timeout(raw, reports ? kReportPatience : kPatience);
    sqlite3_exec(raw, reports ? kReportCache : kCache, nullptr, nullptr, nullptr);
    code = sqlite3_exec(raw, "PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK || (code & 0xff) == SQLITE_BUSY) return;
  code_ = raw ? sqlite3_extended_errcode(raw) : code;
  systemError_ = raw ? sqlite3_system_errno(raw) : 0;
  handle_.reset();
}

// What goes wrong with COMMIT is known to the log's file alone.
int Connection::lastSystemError() const {
  if (!handle_) return systemError_;
  int error = 0;
  sqlite3_file* log = nullptr;
  if (sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                           static_cast<void*>(&log)) == SQLITE_OK &&
      log && log->pMethods) {
    log->pMethods->xFileControl(log, SQLITE_FCNTL_LAST_ERRNO, &error);
  }
  return error != 0 ? error : sqlite3_system_errno(handle_.get());
}

Statement* Connection::prepared(std::string_view sql) {
  if (const auto found = statements_.find(sql); found != statements_.end()) return &found->second;
  Statement statement(handle_.get(), sql);
  if (!statement.ok()) {
    const auto plain = withoutIndex(sql);
    if (plain != sql) statement = Statement(handle_.get(), plain);
  }
  if (!statement.ok()) return nullptr;
  if (statements_.size() >= kMostStatements) statements_.clear();
  return &statements_.emplace(sql, std::move(statement)).first->second;
}

}  // namespace orvanta
