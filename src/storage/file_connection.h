// A connection for work on store files as a whole: checks, copies, repairs.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/files.h"
#include "storage/statement.h"

namespace orvanta {

/// An open SQLite file, or nothing and the reason. Trusts nothing that the file holds. Not
/// thread-safe.
class FileConnection {
 public:
  FileConnection() = default;

  /// To read only: neither the file nor what lies beside it is made or changed. Where nobody has
  /// the file open it is read as one that cannot change; one that a killed program left with a
  /// write-ahead log is read from a copy in the folder for temporary files.
  static FileConnection reading(const std::filesystem::path& file);

  /// To read and write. Makes no file.
  static FileConnection writing(const std::filesystem::path& file);

  /// An empty database without a file.
  static FileConnection inMemory();

  explicit operator bool() const { return handle_ != nullptr; }
  sqlite3* get() const { return handle_.get(); }
  /// SQLite's code and words for what went wrong last.
  int code() const;
  std::string message() const;

  /// Several statements; SQLITE_OK or an error code.
  int exec(const char* sql) const { return sqlite3_exec(get(), sql, nullptr, nullptr, nullptr); }
  /// Shows each row to `visit`. SQLITE_DONE, or the code of what ended the rows.
  int each(std::string_view sql, const Args& args,
           const std::function<void(const Cursor&)>& visit) const;
  /// The number in the first column of the first row; 0 when there is none.
  int64_t number(std::string_view sql, const Args& args = {}) const;

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
  };
  void open(const std::string& name, int flags);

  std::unique_ptr<ScratchFolder> scratch_;  // outlives the connection to what is in it
  std::unique_ptr<sqlite3, Close> handle_;
  int code_ = SQLITE_CANTOPEN;
  std::string message_;
};

/// `name` as a part of an SQL text, whatever it holds.
std::string quotedName(std::string_view name);

/// The file's companion that holds what was written last.
std::filesystem::path walOf(const std::filesystem::path& file);
std::filesystem::path shmOf(const std::filesystem::path& file);

/// Removes a database that nobody has open, with what SQLite has put beside it. False when
/// something of it is left.
bool removeDatabase(const std::filesystem::path& file);

}  // namespace orvanta
