#include "storage/statement.h"

namespace orvanta {

int Cursor::column(std::string_view wanted) const {
  for (int i = columns() - 1; i >= 0; --i) {
    if (name(i) == wanted) return i;
  }
  return -1;
}

// Through sqlite3_value: each sqlite3_column_* call takes the connection's mutex, and a report
// makes millions of them. Reading an unprotected value is safe here since the Database lets nobody
// else at the connection while a row is looked at.
std::optional<std::string_view> Cursor::str(int column) const {
  auto* value = sqlite3_column_value(statement_, column);
  if (sqlite3_value_type(value) != SQLITE_TEXT) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

std::optional<int64_t> Cursor::int_(int column) const {
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

double Cursor::dbl(int column) const {
  auto* value = sqlite3_column_value(statement_, column);
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      return sqlite3_value_double(value);
    default:
      return 0;
  }
}

Value Cursor::value(int column) const {
  switch (sqlite3_column_type(statement_, column)) {
    case SQLITE_INTEGER:
      return int64_t{sqlite3_column_int64(statement_, column)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement_, column);
    case SQLITE_TEXT:
      return *str(column);
    default:
      return {};
  }
}

Statement::Statement(sqlite3* connection, std::string_view sql) {
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
  handle_.reset(raw);
}

void Statement::bind(const Args& args) {
  int index = 0;
  for (const auto& arg : args) {
    ++index;
    if (const auto* number = arg.integer()) {
      sqlite3_bind_int64(handle_.get(), index, *number);
    } else if (const auto* number = arg.real()) {
      sqlite3_bind_double(handle_.get(), index, *number);
    } else if (const auto* text = arg.text()) {
      sqlite3_bind_text(handle_.get(), index, text->c_str(), -1, SQLITE_TRANSIENT);
    } else {
      sqlite3_bind_null(handle_.get(), index);
    }
  }
}

void Statement::reset() {
  sqlite3_reset(handle_.get());
  sqlite3_clear_bindings(handle_.get());
}

}  // namespace orvanta
