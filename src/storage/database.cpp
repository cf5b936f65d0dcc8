#include "storage/database.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>
#include <utility>

#include "storage/backups.h"
#include "storage/schema.h"
#include "storage/transaction.h"

namespace orvanta {
namespace {

// Every write costs whole pages, and the end of the open span is written every ten seconds: 1.8 MiB
// in a busy hour, where pages of 4096 bytes take 6.6. Long reads pay 13 % for it.
constexpr auto kNewFile = "PRAGMA page_size=1024";
// A log that a long reader made long is cut again; what is erased is overwritten.
constexpr auto kOurs =
    "PRAGMA synchronous=NORMAL; PRAGMA journal_size_limit=1048576; PRAGMA secure_delete=ON";

constexpr int kWritable = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;

bool repeatedColumn(std::string_view message) {
  return message.find("duplicate column") != std::string_view::npos;
}

bool sameKey(int code) {
  return Written::failed(code).conflict();
}

}  // namespace

Database::Database(DataLocation where, Log log, Clock clock)
    : where_(std::move(where)), log_(std::move(log)), clock_(std::move(clock)), health_(clock_) {
  prepare(where_, log_);
  {
    const std::lock_guard lock(mutex_);
    open();
  }
  tell();
}

std::optional<Database::Identity> Database::identity(const char* suffix) const {
  struct stat info{};
  if (stat((where_.file().string() + suffix).c_str(), &info) != 0) return {};
  return Identity{info.st_dev, info.st_ino};
}

void Database::open() {
  connection_ = Connection(where_.file(), kWritable);
  identity_ = identity();
  upToDate_ = false;
  refused_.reset();
  if (!connection_) {
    refused_ =
        troubleOf(connection_.code(), connection_.systemError()).value_or(StoreTrouble::Absent);
    if (health_.failed(*refused_)) {
      log_("Orvanta: impossible d'ouvrir la base " + where_.file().string());
    }
    openReadOnly();
    return;
  }
  sqlite3_exec(connection_.get(), kNewFile, nullptr, nullptr, nullptr);
  sqlite3_exec(connection_.get(), kOurs, nullptr, nullptr, nullptr);
  if (connection_.readOnly()) {
    if (health_.failed(StoreTrouble::ReadOnly)) {
      log_("Orvanta: la base est en lecture seule : " + where_.file().string());
    }
  } else {
    bringUpToDate().forget();
  }
}

// Where nothing can be written beside the file, what it holds is shown all the same.
void Database::openReadOnly() {
  const int code = connection_.code() & 0xff;
  if (code == SQLITE_NOTADB || code == SQLITE_CORRUPT || !identity_) return;
  connection_ = Connection::immutable(where_.file());
}

Written Database::bringUpToDate() {
  if (std::exchange(upgrading_, true)) return Written::stored();
  auto written = Written::stored();
  if (const auto age = ageOf(*this)) {
    if (*age == StoreAge::Older && backedUp_ != identity()) {
      Backups backups(Backups::folderOf(where_), {.log = log_});
      if (backups.make(where_.file(), clock_()).made) backedUp_ = identity();
    }
    if (*age != StoreAge::Current) written = migrate(*this);
    upToDate_ = bool{written};
    if (upToDate_) backedUp_.reset();
  }
  upgrading_ = false;
  return written;
}

bool Database::readable() {
  const std::lock_guard lock(mutex_);
  return bool{connection_};
}

void Database::setErrorReport(ErrorReport report) {
  const std::lock_guard lock(hookMutex_);
  report_ = std::move(report);
}

void Database::setReplaced(std::function<void(const std::string&)> replaced) {
  const std::lock_guard lock(hookMutex_);
  replaced_ = std::move(replaced);
}

// A file that could only be opened to read fails otherwise than for the reason.
std::optional<StoreTrouble> Database::trouble(int code) const {
  const int kind = code & 0xff;
  if (refused_ && (kind == SQLITE_READONLY || kind == SQLITE_CANTOPEN)) return refused_;
  return troubleOf(code, connection_.lastSystemError());
}

// Remembers the failure; it is told by tell(), when no lock is held any more.
Written Database::failed(int code, std::string_view sql, Tell tell) {
  if (sameKey(code)) return Written::failed(code);
  const std::string message = connection_ ? sqlite3_errmsg(connection_.get()) : "";
  if (repeatedColumn(message)) return Written::failed(code);
  const auto found = trouble(code);
  // What the system told of it is gone when the caller asks why.
  if (found == StoreTrouble::Full) code = SQLITE_FULL;
  if (found == StoreTrouble::ReadOnly) code = SQLITE_READONLY;
  if (found && !health_.failed(*found)) return Written::failed(code);
  // A file whose tables could not be made yet: why not is told already.
  if (!found && !upToDate_ && health_.condition()) return Written::failed(code);
  const std::lock_guard lock(hookMutex_);
  untold_.push_back({message, std::string(sql), tell});
  return Written::failed(code);
}

void Database::tell() {
  decltype(untold_) untold;
  ErrorReport report;
  {
    const std::lock_guard lock(hookMutex_);
    if (untold_.empty()) return;
    untold.swap(untold_);
    report = report_;
  }
  for (const auto& [message, sql, how] : untold) {
    log_("Orvanta SQL: " + message + (sql.empty() ? "" : " — " + sql));
    if (report && how == Tell::LogAndReport) report("sql: " + message);
  }
}

// The file is somebody else's for a moment: waiting for it keeps nobody from the connection.
Written Database::patiently(const Attempt& attempt) {
  using namespace std::chrono_literals;
  constexpr auto kPatience = 2s;
  constexpr auto kPause = 10ms;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      auto written = attempt();
      const bool busy = (written.code() & 0xff) == SQLITE_BUSY && depth_ == 0;
      if (!busy || std::chrono::steady_clock::now() >= end) return written;
    }
    std::this_thread::sleep_for(kPause);
  }
}

Written Database::exec(const std::string& sql) {
  auto written = patiently([&] { return execLocked(sql); });
  tell();
  return written;
}

Written Database::run(std::string_view sql, const Args& args) {
  auto written = patiently([&] { return runLocked(sql, args); });
  tell();
  return written;
}

Written Database::execLocked(const std::string& sql) {
  if (!connection_) return Written::failed(SQLITE_CANTOPEN);
  const int code = sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? Written::stored() : failed(code, "");
}

Written Database::runLocked(std::string_view sql, const Args& args) {
  if (!connection_) return Written::failed(SQLITE_CANTOPEN);
  auto* statement = connection_.prepared(sql);
  if (!statement) {
    const int code = sqlite3_extended_errcode(connection_.get());
    return trouble(code) ? failed(code, sql) : Written::failed(code);
  }
  statement->bind(args);
  const auto before = sqlite3_total_changes64(connection_.get());
  const int code = statement->step();
  if (code != SQLITE_ROW && code != SQLITE_DONE) {
    auto written = failed(code, sql);
    statement->reset();
    return written;
  }
  statement->reset();
  const bool changed = sqlite3_total_changes64(connection_.get()) != before;
  if (changed && depth_ == 0) health_.wrote();
  return Written::stored(sqlite3_last_insert_rowid(connection_.get()));
}

bool Database::each(std::string_view sql, const Args& args,
                    const std::function<void(const Cursor&)>& visit) {
  const int code = readRows(sql, args, visit);
  tell();
  return code == SQLITE_DONE;
}

// SQLITE_DONE, or why those were not all.
int Database::readRows(std::string_view sql, const Args& args,
                       const std::function<void(const Cursor&)>& visit) {
  const std::lock_guard lock(mutex_);
  if (!connection_) return SQLITE_CANTOPEN;
  auto* statement = connection_.prepared(sql);
  const int code =
      statement ? statement->visitRows(args, visit) : sqlite3_extended_errcode(connection_.get());
  return code == SQLITE_DONE ? code : failed(code, sql, Tell::Log).code();
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
  constexpr int64_t kAnotherFile = int64_t{1} << 40;
  return generation_ * kAnotherFile + others +
         (connection_ ? sqlite3_total_changes64(connection_.get()) : 0);
}

std::string Database::whyNot(const Written& written) {
  const std::lock_guard lock(mutex_);
  const auto found = trouble(written.code());
  return found ? std::string(sentenceOf(*found))
               : "Ce changement n’a pas pu être enregistré ; le journal du système dit pourquoi.";
}

bool Database::truncateLog() {
  const std::scoped_lock lock(mutex_, scanMutex_);  // reports of ours are waited for
  if (!connection_ || depth_ > 0) return false;
  int frames = -1;
  int moved = -1;
  const int code = sqlite3_wal_checkpoint_v2(connection_.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE,
                                             &frames, &moved);
  return code == SQLITE_OK;
}

}  // namespace orvanta
