#include "storage/table_shape.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "storage/rule.h"

namespace orvanta {
namespace {

// As SQLite reads a declared type.
TableShape::Kind kindOf(std::string_view declared) {
  const auto type = lowerCase(declared);
  const auto has = [&](std::string_view part) { return type.find(part) != std::string::npos; };
  if (has("int")) return TableShape::Kind::kInteger;
  if (has("char") || has("clob") || has("text")) return TableShape::Kind::kText;
  if (has("real") || has("floa") || has("doub")) return TableShape::Kind::kReal;
  return TableShape::Kind::kAny;
}

// A whole number in a column of reals is stored as an integer.
bool fitsColumn(const Value& value, const TableShape::Column& column) {
  if (value.isNull()) return !column.needed;
  switch (column.kind) {
    case TableShape::Kind::kInteger:
      return value.integer() != nullptr;
    case TableShape::Kind::kReal:
      return value.integer() || value.real();
    case TableShape::Kind::kText:
      return value.text() != nullptr;
    default:
      return true;
  }
}

// Absent for what is no time at all.
std::optional<double> timeIn(const Value& value) {
  constexpr double kEndOfTimes = 253402300800;  // the year 10000
  std::optional<double> time;
  if (const auto* real = value.real()) time = *real;
  if (const auto* whole = value.integer()) time = static_cast<double>(*whole);
  return time && std::abs(*time) < kEndOfTimes ? time : std::nullopt;
}

bool soundSpan(const TableShape& events, const Args& row) {
  const int startColumn = events.column("start");
  const int endColumn = events.column("end");
  if (startColumn < 0 || endColumn < 0) return false;
  const auto start = timeIn(row[static_cast<std::size_t>(startColumn)]);
  const auto end = timeIn(row[static_cast<std::size_t>(endColumn)]);
  return start && end && *start <= *end;
}

TableShape shapeOf(const FileConnection& connection, const std::string& table) {
  enum { kId, kName, kType, kNotNull, kDefault, kPrimaryKey };
  TableShape shape{.name = table};
  connection.each("PRAGMA table_info(" + quotedName(table) + ")", {}, [&](const Cursor& row) {
    const bool key = row.int_(kPrimaryKey).value_or(0) != 0;
    const auto type = row.str(kType).value_or("");
    if (key && lowerCase(type) == "integer") {
      shape.rowidColumn = static_cast<int>(shape.columns.size());
    }
    shape.columns.push_back({.name = std::string(row.str(kName).value_or("")),
                             .kind = kindOf(type),
                             .needed = key || row.int_(kNotNull).value_or(0) != 0,
                             .defaultValue = std::string(row.str(kDefault).value_or(""))});
  });
  return shape;
}

}  // namespace

int TableShape::column(std::string_view wanted) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const Column& one) { return one.name == wanted; });
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

bool TableShape::fits(const Args& record) const {
  constexpr std::size_t kFewest = 2;
  if (record.size() < kFewest || record.size() > columns.size()) return false;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const bool rowid = static_cast<int>(i) == rowidColumn;
    const Value value = i < record.size() ? record[i] : Value();
    if (rowid ? !value.isNull() : !fitsColumn(value, columns[i])) return false;
  }
  if (name != "rules") return true;
  const int field = column("field");
  const auto* text = field < 0 ? nullptr : record[static_cast<std::size_t>(field)].text();
  return text && parsed<RuleField>(*text);
}

bool TableShape::sound(const Args& row) const {
  return name != "events" || soundSpan(*this, row);
}

std::vector<TableShape> tablesOf(const FileConnection& connection) {
  std::vector<std::string> names;
  connection.each(
      "SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite_%' ORDER BY "
      "name",
      {}, [&](const Cursor& row) { names.emplace_back(row.str(0).value_or("")); });
  std::vector<TableShape> tables;
  for (const auto& name : names) tables.push_back(shapeOf(connection, name));
  return tables;
}

}  // namespace orvanta
