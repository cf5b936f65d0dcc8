#include "storage/touched_spans.h"

#include <sqlite3.h>

#include <memory>
#include <string_view>

namespace orvanta {
namespace {

struct Finalize {
  void operator()(sqlite3_changeset_iter* rows) const { sqlite3changeset_finalize(rows); }
};

}  // namespace

TouchedSpans touchedSpans(const std::string& changeset) {
  TouchedSpans touched;
  sqlite3_changeset_iter* rows = nullptr;
  if (sqlite3changeset_start(&rows, static_cast<int>(changeset.size()),
                             const_cast<char*>(changeset.data())) != SQLITE_OK) {
    return touched;
  }
  const std::unique_ptr<sqlite3_changeset_iter, Finalize> owner(rows);
  while (sqlite3changeset_next(rows) == SQLITE_ROW) {
    const char* name = nullptr;
    int columns = 0;
    int operation = 0;
    if (sqlite3changeset_op(rows, &name, &columns, &operation, nullptr) != SQLITE_OK) break;
    const std::string_view table(name);
    touched.sorting = touched.sorting || table == "rules" || table == "projects";
    if (table != "events") continue;
    sqlite3_value* id = nullptr;
    const bool added = operation == SQLITE_INSERT;
    if ((added ? sqlite3changeset_new : sqlite3changeset_old)(rows, 0, &id) == SQLITE_OK && id) {
      (added ? touched.added : touched.known).push_back(sqlite3_value_int64(id));
    }
  }
  return touched;
}

}  // namespace orvanta
