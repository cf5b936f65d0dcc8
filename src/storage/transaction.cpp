#include "storage/transaction.h"

#include <chrono>
#include <thread>

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kUsual = 2s;
constexpr auto kPause = 10ms;

bool busy(const Written& written) {
  return (written.code() & 0xff) == SQLITE_BUSY;
}

}  // namespace

Transaction::Transaction(Database& db, Patience patience)
    : db_(db), patience_(patience), lock_(db.mutex_, std::defer_lock) {
  begin();
}

void Transaction::begin() {
  const auto end = std::chrono::steady_clock::now() + kUsual;
  for (;;) {
    if (patience_ == Patience::Usual) {
      lock_.lock();
    } else if (!lock_.try_lock()) {
      result_ = Written::failed(SQLITE_BUSY);
      return;
    }
    const bool outermost = db_.depth_ == 0;
    result_ = beginOnce();
    if (result_) {
      ++db_.depth_;
      open_ = true;
      db_.health_.unlocked();
      return;
    }
    lock_.unlock();
    if (!outermost || !busy(result_) || patience_ == Patience::None ||
        std::chrono::steady_clock::now() >= end) {
      return;
    }
    // Nobody waits for the connection while we wait for another program.
    std::this_thread::sleep_for(kPause);
  }
}

Written Transaction::beginOnce() {
  if (db_.depth_ > 0) return step("SAVEPOINT within");
  if (!db_.upToDate_ && db_.connection_) {
    // Where tables may be missing, what keeps them from being made keeps all else from being
    // stored.
    if (auto made = db_.bringUpToDate(); !made && troubleOf(made.code())) return made;
  }
  return step("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (open_) {
    // SQLite has rolled back by itself after some failures.
    const bool over = sqlite3_get_autocommit(db_.connection_.get()) != 0;
    if (!over && db_.depth_ > 1) {
      step("ROLLBACK TO within").forget();
      step("RELEASE within").forget();
    } else if (!over) {
      step("ROLLBACK").forget();
    }
    end();
  }
  if (lock_.owns_lock()) lock_.unlock();
  db_.tell();
}

// SQLite itself would wait some milliseconds for another program.
Written Transaction::step(const char* sql) {
  const bool waits = patience_ != Patience::None || !db_.connection_;
  if (!waits) sqlite3_busy_timeout(db_.connection_.get(), 0);
  auto written = db_.runLocked(sql, {});
  if (!waits) sqlite3_busy_timeout(db_.connection_.get(), Connection::kPatience);
  return written;
}

// After some failures SQLite rolls back all by itself, also when it was a transaction within this
// one that failed: each further statement would be stored on its own.
bool Transaction::intact() {
  if (result_ && sqlite3_get_autocommit(db_.connection_.get()) != 0) fail(SQLITE_ABORT_ROLLBACK);
  return bool{result_};
}

void Transaction::end() {
  --db_.depth_;
  open_ = false;
}

int64_t Transaction::run(std::string_view sql, const Args& args) {
  if (!intact()) return -1;
  const auto before = sqlite3_total_changes64(db_.connection_.get());
  auto written = db_.runLocked(sql, args);
  const bool any = sqlite3_total_changes64(db_.connection_.get()) > before;
  changes_ = any ? sqlite3_changes64(db_.connection_.get()) : 0;  // without what triggers changed
  wrote_ = wrote_ || any;
  if (!written) result_ = written;
  return written.rowId();
}

void Transaction::exec(const std::string& sql) {
  if (intact()) result_ = db_.execLocked(sql);
}

void Transaction::each(std::string_view sql, const Args& args,
                       const std::function<void(const Cursor&)>& visit) {
  if (!intact()) return;
  const int code = db_.readRows(sql, args, visit);
  if (code != SQLITE_DONE) fail(code);
}

Written Transaction::commit() {
  if (!open_ || !intact()) return result_ ? Written::failed(SQLITE_MISUSE) : result_;
  if (db_.depth_ > 1) {
    result_ = step("RELEASE within");
    if (result_) end();
    return result_;
  }
  const auto patience = std::chrono::steady_clock::now() + kUsual;
  // Without a write-ahead log, a reader of another program keeps it waiting.
  while (busy(result_ = step("COMMIT")) && patience_ == Patience::Usual &&
         std::chrono::steady_clock::now() < patience) {
    std::this_thread::sleep_for(kPause);
  }
  if (!result_) return result_;
  end();
  if (wrote_) db_.health_.wrote();
  lock_.unlock();
  return result_;
}

}  // namespace orvanta
