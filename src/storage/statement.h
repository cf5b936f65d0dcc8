// RAII around a prepared SQLite statement.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "storage/value.h"

namespace orvanta {

/// The row a statement stands on, read in place: nothing is copied, so text is valid only until the
/// next step. The conversions are those of Row.
class Cursor {
 public:
  explicit Cursor(sqlite3_stmt* statement) : statement_(statement) {}

  int columns() const { return sqlite3_column_count(statement_); }
  std::string_view name(int column) const { return sqlite3_column_name(statement_, column); }
  /// Number of the last column with this name, -1 when there is none. Ask once, not for each row.
  int column(std::string_view name) const;

  /// Nothing, or 0, for the column -1.
  std::optional<std::string_view> str(int column) const;
  std::optional<int64_t> int_(int column) const;
  double dbl(int column) const;
  /// NULL for a blob: blobs are never returned.
  Value value(int column) const;

 private:
  sqlite3_stmt* statement_;
};

/// A prepared statement. Not thread-safe; the Database that owns it serialises its use.
class Statement {
 public:
  /// `ok` is false when SQL could not be compiled; the connection then holds the message.
  Statement(sqlite3* connection, std::string_view sql);

  bool ok() const { return handle_ != nullptr; }

  /// Binds `args` to the parameters 1, 2, 3… Text is bound up to its first NUL.
  void bind(const Args& args);
  /// SQLITE_ROW, SQLITE_DONE or an error code.
  int step() { return sqlite3_step(handle_.get()); }
  /// Binds, shows every row to `visit`, resets. SQLITE_DONE, or the code of the error that ended
  /// the rows; the connection then holds its message.
  int visitRows(const Args& args, const std::function<void(const Cursor&)>& visit);
  /// Ready for the next use; ends the read transaction.
  void reset();

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

// Type, text and length through one sqlite3_value, since each sqlite3_column_* call takes the
// connection's mutex. Such a value may be read only while nobody else uses the connection, which
// the Database sees to.
inline std::optional<std::string_view> Cursor::str(int column) const {
  if (column < 0) return {};
  auto* value = sqlite3_column_value(statement_, column);
  if (sqlite3_value_type(value) != SQLITE_TEXT) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

inline std::optional<int64_t> Cursor::int_(int column) const {
  auto* value = sqlite3_column_value(statement_, column);
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return sqlite3_value_int64(value);
    case SQLITE_FLOAT:
      return truncated(sqlite3_value_double(value));
    default:
      return {};
  }
}

inline double Cursor::dbl(int column) const {
  auto* value = sqlite3_column_value(statement_, column);
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      return sqlite3_value_double(value);
    default:
      return 0;
  }
}

}  // namespace orvanta
