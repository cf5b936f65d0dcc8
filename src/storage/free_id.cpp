#include "storage/free_id.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "storage/change_log.h"
#include "storage/id_marks.h"

namespace orvanta {
namespace {

// Rules and projects that come or go have texts. Without the list there is no way back.
std::vector<int64_t> entriesWithTexts(Database& db) {
  std::vector<int64_t> ids;
  Transaction look(db);
  look.each("SELECT id FROM changes WHERE words IS NOT NULL AND changeset IS NOT NULL", {},
            [&](const Cursor& row) { ids.push_back(row.int_(0).value_or(0)); });
  return ids;
}

// Looks at the whole history once in a store's life: to unpack it each time would take the longer,
// the more was done.
HighestIds idsInHistory(Transaction& change) {
  if (auto marked = markedIds(change)) return *std::move(marked);
  HighestIds highest;
  for (const auto entry : entriesWithTexts(change.database())) {
    const auto kept = change_log::find(change, entry);
    if (!kept) continue;
    for (const auto& [table, id] : highestIds(kept->changeset)) {
      highest[table] = std::max(highest[table], id);
    }
  }
  markIds(change, highest);
  return highest;
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
  const auto kept = idsInHistory(change);
  const auto its = kept.find(table);
  return std::max(highest, its != kept.end() ? its->second : 0) + 1;
}

}  // namespace orvanta
