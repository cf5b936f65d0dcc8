#include "storage/free_id.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "storage/change_log.h"

namespace orvanta {
namespace {

struct Finalize {
  void operator()(sqlite3_changeset_iter* rows) const { sqlite3changeset_finalize(rows); }
};

// Of the rows of the table that come or go with a difference; 0 when none do.
int64_t highestId(const std::string& changeset, std::string_view table) {
  sqlite3_changeset_iter* rows = nullptr;
  if (sqlite3changeset_start(&rows, static_cast<int>(changeset.size()),
                             const_cast<char*>(changeset.data())) != SQLITE_OK) {
    return 0;
  }
  const std::unique_ptr<sqlite3_changeset_iter, Finalize> owner(rows);
  int64_t highest = 0;
  while (sqlite3changeset_next(rows) == SQLITE_ROW) {
    const char* name = nullptr;
    int columns = 0;
    int operation = 0;
    if (sqlite3changeset_op(rows, &name, &columns, &operation, nullptr) != SQLITE_OK) break;
    if (operation == SQLITE_UPDATE || name != table) continue;
    sqlite3_value* id = nullptr;
    const auto get = operation == SQLITE_INSERT ? sqlite3changeset_new : sqlite3changeset_old;
    if (get(rows, 0, &id) != SQLITE_OK || !id) continue;
    const int64_t number = sqlite3_value_int64(id);
    if (number < kIdLimit) highest = std::max(highest, number);
  }
  return highest;
}

// Rules and projects that come or go have texts. Without the list there is no way back.
std::vector<int64_t> entriesWithTexts(Database& db) {
  std::vector<int64_t> ids;
  Transaction look(db);
  look.each("SELECT id FROM changes WHERE words IS NOT NULL AND changeset IS NOT NULL", {},
            [&](const Cursor& row) { ids.push_back(row.int_(0).value_or(0)); });
  return ids;
}

// A sheet that was sent tells of projects by their numbers; terms stay when their project goes.
constexpr auto kProjectsNamed =
    "SELECT max(project_id) FROM project_terms WHERE project_id < ?1 UNION ALL "
    "SELECT max(json_extract(line.value, '$.project_id')) FROM sheets, "
    "json_each(iif(json_valid(content), content, '{}'), '$.rows') AS line "
    "WHERE line.type = 'object' AND json_extract(line.value, '$.project_id') < ?1";

}  // namespace

int64_t freeId(Transaction& change, std::string_view table) {
  int64_t highest = 0;
  const auto take = [&](const Cursor& row) {
    highest = std::max(highest, row.int_(0).value_or(0));
  };
  change.each(fmt::format("SELECT max(id) FROM {} WHERE id < ?", table), {kIdLimit}, take);
  if (table == "projects") change.each(kProjectsNamed, {kIdLimit}, take);
  for (const auto entry : entriesWithTexts(change.database())) {
    const auto kept = change_log::find(change, entry);
    if (kept) highest = std::max(highest, highestId(kept->changeset, table));
  }
  return highest + 1;
}

}  // namespace orvanta
