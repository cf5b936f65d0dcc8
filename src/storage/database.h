// The one SQLite file in which everything is kept.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "storage/connection.h"
#include "storage/data_location.h"
#include "storage/statement.h"
#include "storage/value.h"

namespace orvanta {

/// The single owner of the database file. Every operation may be called from any thread and blocks
/// until it is done; one statement runs at a time, but for scan(). None throws: a failure yields
/// false, -1 or an empty list, is logged, and is told to the error-report hook. The program runs on
/// without a usable file, with nothing in it; a file that is not a database is left as it is.
///
/// What is wrong with the file itself (read-only, disk full, damaged) would fail every statement of
/// every tick: it is told once, and again only after a write has succeeded in between.
class Database {
 public:
  using ErrorReport = std::function<void(const std::string& message)>;

  /// Prepares the location, opens the file and brings it up to date.
  explicit Database(DataLocation where, Log log = systemLog);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const DataLocation& location() const { return where_; }
  const Log& log() const { return log_; }

  /// Is called after a failed statement, on the caller's thread, with "sql: " and SQLite's message.
  /// It may use the database.
  void setErrorReport(ErrorReport report);

  /// Several statements without parameters. True on success.
  bool exec(const std::string& sql);

  /// One statement. After success the row id that the connection inserted last (meaningful after
  /// INSERT only), -1 on failure. A UNIQUE conflict and a repeated ADD COLUMN fail silently.
  int64_t run(std::string_view sql, const Args& args = {});

  /// All rows; empty on failure, the rows before the error when it comes late.
  std::vector<Row> query(std::string_view sql, const Args& args = {});

  /// Like query, but shows each row to `visit` in place, without copying it. `visit` must not call
  /// into the database: it would wait for itself.
  void each(std::string_view sql, const Args& args,
            const std::function<void(const Cursor&)>& visit);

  /// Like each, for the long reads of reports: on a connection of its own, which only reads and
  /// sees all that has been written. A scan keeps another scan waiting, but nothing else. An error
  /// in the middle of it is logged: what has been shown until then is not all.
  void scan(std::string_view sql, const Args& args,
            const std::function<void(const Cursor&)>& visit);

  /// Gives back what scans hold to be quick when they are asked the same again.
  void releaseScanMemory();

  /// A number that grows whenever the content may have changed, whoever changed it, this process or
  /// another; to be asked before what is read and kept.
  int64_t revision();

  /// The stored value, else the default, else "".
  std::string setting(const std::string& key);
  void setSetting(const std::string& key, const std::string& value);
  /// The defaults overlaid by what is stored.
  std::map<std::string, std::string> allSettings();

 private:
  bool worthTelling(int code);
  void report(const std::string& message);

  DataLocation where_;
  Log log_;
  std::mutex reportMutex_;
  ErrorReport report_;

  std::mutex mutex_;  // guards the next two: one statement at a time
  Connection connection_;
  std::set<int> told_;  // conditions of the file, by SQLite's code, told since the last good write

  std::mutex scanMutex_;  // guards the next
  Connection scanner_;    // opened by the first scan
};

}  // namespace orvanta
