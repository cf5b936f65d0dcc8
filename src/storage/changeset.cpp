#include "storage/changeset.h"

#include <array>
#include <cstring>
#include <string_view>

namespace orvanta {
namespace {

struct Free {
  void operator()(void* memory) const { sqlite3_free(memory); }
};

// Columns of `events` that retention empties.
constexpr std::array<int, 2> kErasable{5, 6};

bool erasable(int column) {
  return column == kErasable[0] || column == kErasable[1];
}

bool same(sqlite3_value* a, sqlite3_value* b) {
  const int type = sqlite3_value_type(a);
  if (type != sqlite3_value_type(b)) return false;
  switch (type) {
    case SQLITE_INTEGER:
      return sqlite3_value_int64(a) == sqlite3_value_int64(b);
    case SQLITE_FLOAT:
      return sqlite3_value_double(a) == sqlite3_value_double(b);
    case SQLITE_NULL:
      return true;
    default: {
      const auto bytes = static_cast<std::size_t>(sqlite3_value_bytes(a));
      return bytes == static_cast<std::size_t>(sqlite3_value_bytes(b)) &&
             // An empty one may have no place in memory.
             (bytes == 0 || std::memcmp(sqlite3_value_blob(a), sqlite3_value_blob(b), bytes) == 0);
    }
  }
}

// Whether the row differs from what was expected in nothing but what has been erased.
bool onlyErased(sqlite3_changeset_iter* row) {
  const char* table = nullptr;
  int columns = 0;
  int operation = 0;
  if (sqlite3changeset_op(row, &table, &columns, &operation, nullptr) != SQLITE_OK) return false;
  if (std::string_view(table) != "events") return false;
  for (int i = 0; i < columns; ++i) {
    sqlite3_value* expected = nullptr;
    sqlite3_value* found = nullptr;
    if (sqlite3changeset_old(row, i, &expected) != SQLITE_OK || !expected) continue;
    if (sqlite3changeset_conflict(row, i, &found) != SQLITE_OK || !found) return false;
    const bool erased = erasable(i) && sqlite3_value_type(found) == SQLITE_NULL;
    if (!erased && !same(expected, found)) return false;
  }
  return true;
}

// A learnt rule that has been confirmed since is the same rule.
bool onlyConfirmed(sqlite3_changeset_iter* row) {
  const char* table = nullptr;
  int columns = 0;
  int operation = 0;
  return sqlite3changeset_op(row, &table, &columns, &operation, nullptr) == SQLITE_OK &&
         std::string_view(table) == "rule_origins";
}

int onConflict(void* /*context*/, int kind, sqlite3_changeset_iter* row) {
  return kind == SQLITE_CHANGESET_DATA && (onlyErased(row) || onlyConfirmed(row))
             ? SQLITE_CHANGESET_REPLACE
             : SQLITE_CHANGESET_ABORT;
}

}  // namespace

ChangeRecorder::ChangeRecorder(Transaction& change, Recorded what) : change_(change) {
  if (!change) return;
  sqlite3_session* raw = nullptr;
  int code = sqlite3session_create(change.connection(), "main", &raw);
  session_.reset(raw);
  for (const auto* table :
       {"events", "projects", "rules", "rule_origins", "project_terms", "goals"}) {
    if (code == SQLITE_OK) code = sqlite3session_attach(raw, table);
  }
  if (what == Recorded::Settings && code == SQLITE_OK) {
    code = sqlite3session_attach(raw, "settings");
  }
  if (code != SQLITE_OK) change.fail(code);
}

std::string ChangeRecorder::changeset() {
  if (!session_ || !change_) return {};
  int size = 0;
  void* raw = nullptr;
  const int code = sqlite3session_changeset(session_.get(), &size, &raw);
  const std::unique_ptr<void, Free> bytes(raw);
  if (code != SQLITE_OK) {
    change_.fail(code);
    return {};
  }
  return {static_cast<const char*>(raw), static_cast<std::size_t>(size)};
}

Applied apply(Transaction& change, const std::string& changeset, bool opposite) {
  if (!change) return Applied::Failed;
  auto size = static_cast<int>(changeset.size());
  void* bytes = const_cast<char*>(changeset.data());
  std::unique_ptr<void, Free> inverted;
  if (opposite) {
    void* raw = nullptr;
    const int code = sqlite3changeset_invert(size, bytes, &size, &raw);
    inverted.reset(raw);
    if (code != SQLITE_OK) {
      change.fail(code);
      return Applied::Failed;
    }
    bytes = raw;
  }
  const int code =
      sqlite3changeset_apply(change.connection(), size, bytes, nullptr, onConflict, nullptr);
  if (code == SQLITE_OK) {
    change.touched();
    return Applied::All;
  }
  change.fail(code);
  return code == SQLITE_ABORT ? Applied::Conflict : Applied::Failed;
}

}  // namespace orvanta
