// The one SQLite file in which everything is kept.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/log.h"
#include "storage/connection.h"
#include "storage/data_location.h"
#include "storage/settings.h"
#include "storage/statement.h"
#include "storage/store_health.h"
#include "storage/value.h"
#include "storage/written.h"

namespace orvanta {

class Snapshot;
class Transaction;

/// The single owner of the database file. Every operation may be called from any thread and blocks
/// until it is done; one statement runs at a time, but for scan(). A write waits up to two seconds
/// for another program that holds the file, and nobody else waits with it. None throws: a failure
/// yields a Written that says so, false or an empty list, is logged, and is told to the
/// error-report hook. The program runs on without a usable file, with nothing in it. What belongs
/// together is written in a Transaction.
///
/// What is wrong with the file itself (read-only, disk full, damaged) would fail every statement of
/// every tick: it is told once, and again only after a write has succeeded in between.
class Database {
 public:
  using ErrorReport = std::function<void(const std::string& message)>;

  /// Prepares the location, opens the file and brings it up to date, an older form of it after a
  /// backup; writes nothing when it is.
  explicit Database(DataLocation where, Log log = systemLog, Clock clock = wallClock);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const DataLocation& location() const { return where_; }
  const Log& log() const { return log_; }

  /// Is called after a failed statement, on the caller's thread, with "sql: " and SQLite's message.
  /// It may use the database.
  void setErrorReport(ErrorReport report);

  /// Several statements without parameters.
  Written exec(const std::string& sql);

  /// One statement. A UNIQUE conflict and a repeated ADD COLUMN fail silently.
  Written run(std::string_view sql, const Args& args = {});

  /// All rows; empty on failure, the rows before the error when it comes late.
  std::vector<Row> query(std::string_view sql, const Args& args = {});

  /// Like query, but shows each row to `visit` in place, without copying it; false when those were
  /// not all. `visit` must not call into the database: it would disturb the rows.
  bool each(std::string_view sql, const Args& args,
            const std::function<void(const Cursor&)>& visit);

  /// Like each, for the long reads of reports: on a connection of its own, which only reads and
  /// sees all that has been written, or what a Snapshot of this thread began with. A scan keeps
  /// another scan waiting, but nothing else.
  bool scan(std::string_view sql, const Args& args,
            const std::function<void(const Cursor&)>& visit);

  /// A number that is another whenever what scans see may have changed; to be asked before what is
  /// scanned and kept. Waits for no writer. Absent when that cannot be told.
  std::optional<int64_t> scanRevision();

  /// Gives back what scans hold to be quick when they are asked the same again.
  void releaseScanMemory();

  /// A number that grows whenever the content may have changed, whoever changed it, this process or
  /// another; to be asked before what is read and kept.
  int64_t revision();

  /// The stored value, else the default, else "". What was set and could not be stored holds all
  /// the same until the program ends, and is stored by look() as soon as that is possible.
  std::string setting(const std::string& key);
  /// The defaults overlaid by what is stored.
  SettingTexts allSettings();
  /// The same without waiting for anybody; absent when the store is busy or cannot be read.
  std::optional<SettingTexts> settingsNow();
  /// What allSettings() are read as.
  Settings settings() { return Settings::of(allSettings()); }
  Written setSetting(const std::string& key, const std::string& value);
  /// All of them are stored, or none.
  Written setSettings(const SettingTexts& values);
  /// The same where `store` has a transaction of its own, in which it calls what it is given.
  using WriteSettings = std::function<void(Transaction& change)>;
  Written setSettings(const SettingTexts& values,
                      const std::function<Written(const WriteSettings& write)>& store);

  /// What is wrong with the file, if anything.
  std::optional<StoreHealth::Condition> condition() const { return health_.condition(); }
  /// A French sentence for the user that says why this was not stored.
  std::string whyNot(const Written& written);
  /// False for a file that could not be opened.
  bool readable();

  /// To be called every few seconds: opens the file again where it was taken away, replaced by
  /// another or could not be opened, and stores the settings that wait. Does nothing while another
  /// thread is at work.
  void look();
  /// Counts the files opened one after the other: a row id of one means nothing in the next.
  int64_t generation() const { return generation_; }
  /// Is called by look() on its caller's thread when the file has become another or can be written
  /// at last, with a French sentence where the user is to know. It may use the database.
  void setReplaced(std::function<void(const std::string& sentence)> replaced);

  enum class Meanwhile {
    Wait,  ///< every other caller waits
    Fail   ///< every other caller finds a store that cannot be opened
  };
  /// Lets `work` change the file or put another in its place: nothing of ours has it open then.
  /// Opens what is there afterwards. Yields what `work` yields, which says that nothing is wrong
  /// with the file any more; false when it is at work already.
  bool exchange(Meanwhile meanwhile, const std::function<bool()>& work);

  /// Empties the write-ahead log into the file, so that what was erased is in neither; waits for a
  /// report that is being read. False when a reader of another program is in the way.
  bool truncateLog();

 private:
  friend class Snapshot;
  friend class Transaction;
  using Attempt = std::function<Written()>;
  struct Identity {
    uint64_t device = 0;
    uint64_t number = 0;
    friend bool operator==(const Identity&, const Identity&) = default;
  };

  // To be called with mutex_ held.
  void open();
  void openReadOnly();
  Written bringUpToDate();
  Written execLocked(const std::string& sql);
  Written runLocked(std::string_view sql, const Args& args);
  int readRows(std::string_view sql, const Args& args,
               const std::function<void(const Cursor&)>& visit);
  enum class Tell { Log, LogAndReport };
  std::optional<StoreTrouble> trouble(int code) const;
  Written failed(int code, std::string_view sql, Tell tell = Tell::LogAndReport);
  std::optional<Identity> identity(const char* suffix = "") const;
  std::optional<SettingTexts> storedSettings();
  SettingTexts overlaid(SettingTexts stored);
  std::string replaceFile();

  Written patiently(const Attempt& attempt);
  void settingsStored(const SettingTexts& values);
  void storeWaiting();
  void tell();
  void openScanner();  // with scanMutex_ held

  const DataLocation where_;
  const Log log_;
  const Clock clock_;
  StoreHealth health_;

  std::mutex hookMutex_;  // guards the next three
  ErrorReport report_;
  std::function<void(const std::string&)> replaced_;
  struct Untold {
    std::string message;
    std::string sql;
    Tell tell;
  };
  std::vector<Untold> untold_;

  std::recursive_mutex mutex_;  // guards the next: one statement at a time
  Connection connection_;
  std::optional<Identity> identity_;     // of the open file
  std::optional<StoreTrouble> refused_;  // why it could not be opened to write
  std::optional<Identity> logIdentity_;  // of its write-ahead log, when we last looked
  bool upToDate_ = false;
  bool upgrading_ = false;
  std::optional<Identity> backedUp_;  // of a file of an older form that others keep from us
  std::atomic<bool> away_ = false;    // the file is not to be opened
  int depth_ = 0;                     // of transactions

  std::mutex settingsMutex_;  // guards the next
  SettingTexts waiting_;      // set, and not stored yet

  // Guards the next. Nobody who holds mutex_ waits for it; who holds it may wait for mutex_.
  std::recursive_mutex scanMutex_;
  Connection scanner_;    // opened by the first scan
  int64_t scanners_ = 0;  // opened so far
  std::atomic<int64_t> generation_ = 0;
};

}  // namespace orvanta
