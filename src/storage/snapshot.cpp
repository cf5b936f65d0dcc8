// The database as reports read it: on a connection of its own.
#include "storage/snapshot.h"

#include <fmt/format.h>

namespace orvanta {

Snapshot::Snapshot(Database& db) : db_(db), lock_(db.scanMutex_) {
  db_.openScanner();
  const bool within = db_.scanner_ && sqlite3_get_autocommit(db_.scanner_.get()) == 0;
  open_ = !within && step("BEGIN");
}

Snapshot::~Snapshot() {
  if (open_) step("COMMIT");
}

bool Snapshot::step(const char* sql) {
  auto* statement = db_.scanner_ ? db_.scanner_.prepared(sql) : nullptr;
  return statement && statement->visitRows({}, [](const Cursor&) {}) == SQLITE_DONE;
}

void Database::openScanner() {
  if (scanner_ || away_) return;
  scanner_ = Connection(where_.file(), Connection::kForReports);
  ++scanners_;
}

bool Database::scan(std::string_view sql, const Args& args,
                    const std::function<void(const Cursor&)>& visit) {
  int code = SQLITE_OK;
  int systemError = 0;
  std::string message;
  {
    const std::lock_guard lock(scanMutex_);
    openScanner();
    if (auto* statement = scanner_ ? scanner_.prepared(sql) : nullptr) {
      code = statement->visitRows(args, visit);
      if (code == SQLITE_DONE) return true;
      message = sqlite3_errmsg(scanner_.get());
      systemError = sqlite3_system_errno(scanner_.get());
    }
  }
  if (code == SQLITE_OK) return each(sql, args, visit);
  const auto trouble = troubleOf(code, systemError);
  if (!trouble || health_.failed(*trouble)) {
    log_(fmt::format("Orvanta SQL: {} — {}", message, sql));
  }
  return false;
}

// Of one connection, data_version tells what all others have stored.
std::optional<int64_t> Database::scanRevision() {
  const std::lock_guard lock(scanMutex_);
  auto* statement = scanner_ ? scanner_.prepared("PRAGMA data_version") : nullptr;
  if (!statement) return {};
  std::optional<int64_t> version;
  statement->visitRows({}, [&](const Cursor& row) { version = row.int_(0); });
  constexpr int64_t kAnotherScanner = int64_t{1} << 40;
  return version ? std::optional(scanners_ * kAnotherScanner + *version) : std::nullopt;
}

void Database::releaseScanMemory() {
  const std::lock_guard lock(scanMutex_);
  scanner_ = {};
}

}  // namespace orvanta
