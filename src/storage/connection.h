// RAII around an SQLite connection and its prepared statements.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "storage/statement.h"

namespace orvanta {

/// An open database file, or nothing. Not thread-safe.
class Connection {
 public:
  /// Milliseconds that a statement waits for another program: ticks come on time, whoever holds the
  /// file. Who may wait longer does so without the connection.
  static constexpr int kPatience = 10;

  /// How reports open the file: whoever uses such a connection locks it himself, since SQLite would
  /// take its mutex for every column of every row. The file is not mapped into memory: one that is
  /// cut short by others would end the program, and its pages would count as the program's own.
  static constexpr int kForReports = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX;

  Connection() = default;

  /// Opens `file` with the flags of sqlite3_open_v2 and reads from it, since only the first read
  /// shows whether it is a database at all. Nothing is held when that fails.
  Connection(const std::filesystem::path& file, int flags);

  /// Opens a file where nothing can be written, not even the files that SQLite keeps beside it
  /// while it reads: as it is, without what its write-ahead log holds.
  static Connection immutable(const std::filesystem::path& file);

  explicit operator bool() const { return handle_ != nullptr; }
  sqlite3* get() const { return handle_.get(); }
  /// SQLite's extended code of the failure to open it, SQLITE_OK without one.
  int code() const { return code_; }
  /// The errno behind it, 0 if none.
  int systemError() const { return systemError_; }
  /// The errno behind the last statement's failure, 0 if none.
  int lastSystemError() const;
  /// Whether it can only be read.
  bool readOnly() const { return handle_ && sqlite3_db_readonly(handle_.get(), "main") != 0; }

  /// The statement of this text, compiled at its first use and kept; null when it does not compile.
  /// An index that it names and that the file lacks, since it could never be brought up to date, is
  /// done without: the same answer, later.
  Statement* prepared(std::string_view sql);

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  void open(const std::string& name, int flags);

  std::unique_ptr<sqlite3, Close> handle_;
  int code_ = SQLITE_OK;
  int systemError_ = 0;
  std::unordered_map<std::string, Statement, Hash, std::equal_to<>> statements_;
};

}  // namespace orvanta
