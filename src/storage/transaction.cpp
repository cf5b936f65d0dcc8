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
    : db_(db), lock_(db.mutex_, std::defer_lock) {
  begin(patience);
}

void Transaction::begin(Patience patience) {
  const auto end = std::chrono::steady_clock::now() + kUsual;
  for (;;) {
    if (patience == Patience::Usual) {
      lock_.lock();
    } else if (!lock_.try_lock()) {
      result_ = Written::failed(SQLITE_BUSY);
      return;
    }
    const bool outermost = db_.depth_ == 0;
    if (outermost && !db_.upToDate_ && db_.connection_) db_.bringUpToDate();
    result_ = step(outermost ? "BEGIN IMMEDIATE" : "SAVEPOINT within");
    if (result_) {
      ++db_.depth_;
      open_ = true;
      db_.health_.unlocked();
      return;
    }
    lock_.unlock();
    if (!outermost || !busy(result_) || patience == Patience::None ||
        std::chrono::steady_clock::now() >= end) {
      return;
    }
    // Nobody waits for the connection while we wait for another program.
    std::this_thread::sleep_for(kPause);
  }
}

Transaction::~Transaction() {
  if (open_) {
    // SQLite has rolled back by itself after some failures.
    if (db_.depth_ > 1) {
      step("ROLLBACK TO within").forget();
      step("RELEASE within").forget();
    } else if (sqlite3_get_autocommit(db_.connection_.get()) == 0) {
      step("ROLLBACK").forget();
    }
    end();
  }
  if (lock_.owns_lock()) lock_.unlock();
  db_.tell();
}

Written Transaction::step(const char* sql) {
  return db_.runLocked(sql, {});
}

void Transaction::end() {
  --db_.depth_;
  open_ = false;
}

int64_t Transaction::run(std::string_view sql, const Args& args) {
  if (!result_) return -1;
  const auto before = sqlite3_total_changes64(db_.connection_.get());
  auto written = db_.runLocked(sql, args);
  changes_ = sqlite3_total_changes64(db_.connection_.get()) - before;
  wrote_ = wrote_ || changes_ > 0;
  if (!written) result_ = written;
  return written.rowId();
}

void Transaction::exec(const std::string& sql) {
  if (result_) result_ = db_.execLocked(sql);
}

void Transaction::each(std::string_view sql, const Args& args,
                       const std::function<void(const Cursor&)>& visit) {
  if (result_ && !db_.each(sql, args, visit)) result_ = Written::failed(SQLITE_IOERR_READ);
}

Written Transaction::commit() {
  if (!result_ || !open_) return result_ ? Written::failed(SQLITE_MISUSE) : result_;
  if (db_.depth_ > 1) {
    result_ = step("RELEASE within");
    if (result_) end();
    return result_;
  }
  const auto patience = std::chrono::steady_clock::now() + kUsual;
  // Without a write-ahead log, a reader of another program keeps it waiting.
  while (busy(result_ = step("COMMIT")) && std::chrono::steady_clock::now() < patience) {
    std::this_thread::sleep_for(kPause);
  }
  if (!result_) return result_;
  end();
  if (wrote_) db_.health_.wrote();
  lock_.unlock();
  return result_;
}

}  // namespace orvanta
