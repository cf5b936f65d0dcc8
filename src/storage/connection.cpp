#include "storage/connection.h"

#include <utility>

namespace orvanta {
namespace {

// The program speaks some dozens of statements; beyond this the cache holds text built on the fly.
constexpr std::size_t kMostStatements = 64;
constexpr int kBusyMilliseconds = 5000;
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
  sqlite3* raw = nullptr;
  int code = sqlite3_open_v2(file.c_str(), &raw, flags, nullptr);
  handle_.reset(raw);
  if (code == SQLITE_OK) {
    // Memory set aside for compiling statements, which are compiled once and kept.
    sqlite3_db_config(raw, SQLITE_DBCONFIG_LOOKASIDE, nullptr, 0, 0);
    sqlite3_busy_timeout(raw, kBusyMilliseconds);
    sqlite3_exec(raw, (flags & SQLITE_OPEN_READONLY) != 0 ? kReportCache : kCache, nullptr, nullptr,
                 nullptr);
    code = sqlite3_exec(raw, "PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (code != SQLITE_OK && code != SQLITE_BUSY) handle_.reset();
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
