#include "storage/statement.h"

namespace orvanta {

int Cursor::column(std::string_view wanted) const {
  for (int i = columns() - 1; i >= 0; --i) {
    if (name(i) == wanted) return i;
  }
  return -1;
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

int Statement::visitRows(const Args& args, const std::function<void(const Cursor&)>& visit) {
  bind(args);
  // Also when `visit` throws: what it has begun to read would stay as it is for ever.
  const std::unique_ptr<Statement, void (*)(Statement*)> whenDone(this,
                                                                  [](auto* s) { s->reset(); });
  const Cursor cursor(handle_.get());
  int code = step();
  for (; code == SQLITE_ROW; code = step()) visit(cursor);
  return code;
}

void Statement::reset() {
  sqlite3_reset(handle_.get());
  sqlite3_clear_bindings(handle_.get());
}

}  // namespace orvanta
