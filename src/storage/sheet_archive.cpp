#include "storage/sheet_archive.h"

#include "storage/transaction.h"

namespace orvanta {
namespace {

constexpr auto kColumns =
    "SELECT id, created, title, client, first_day, last_day, version, content FROM sheets ";
constexpr auto kListed =
    "SELECT id, created, title, client, first_day, last_day, version, NULL FROM sheets "
    "WHERE content <> '' ORDER BY created DESC, id DESC";
// Of the same sheet as ?1.
constexpr auto kNewer =
    "SELECT 1 FROM sheets AS newer, sheets AS one WHERE one.id = ?1 AND "
    "newer.client = one.client AND newer.first_day = one.first_day AND "
    "newer.last_day = one.last_day AND newer.project_id IS one.project_id AND "
    "newer.version > one.version";
// It was sent under its number, which no other may have: that stays of the newest.
constexpr auto kEmpty = "UPDATE sheets SET title = '', content = '' WHERE id = ?";
// A newer one has the higher number now.
constexpr auto kForgetEmpty =
    "DELETE FROM sheets WHERE content = '' AND client = ? AND first_day = ? AND last_day = ? AND "
    "project_id IS ?";

FrozenSheet read(const Cursor& row) {
  enum { kId, kCreated, kTitle, kClient, kFrom, kTo, kVersion, kContent };
  const auto text = [&](int column) { return std::string(row.str(column).value_or("")); };
  return {.id = row.int_(kId).value_or(0),
          .created = row.dbl(kCreated),
          .title = text(kTitle),
          .client = text(kClient),
          .from = text(kFrom),
          .to = text(kTo),
          .version = row.int_(kVersion).value_or(1),
          .content = text(kContent)};
}

}  // namespace

Written freezeSheet(Database& db, FrozenSheet& sheet, const std::optional<int64_t>& project) {
  Transaction change(db);
  change.each(
      "SELECT coalesce(max(version), 0) + 1 FROM sheets WHERE client = ? AND first_day = ? AND "
      "last_day = ? AND project_id IS ?",
      {sheet.client, sheet.from, sheet.to, project},
      [&](const Cursor& row) { sheet.version = row.int_(0).value_or(1); });
  sheet.id = change.run(
      "INSERT INTO sheets(created, title, client, first_day, last_day, version, project_id, "
      "content) VALUES (?,?,?,?,?,?,?,?)",
      {sheet.created, sheet.title, sheet.client, sheet.from, sheet.to, sheet.version, project,
       sheet.content});
  change.run(kForgetEmpty, {sheet.client, sheet.from, sheet.to, project});
  return change.commit();
}

std::optional<std::vector<FrozenSheet>> frozenSheets(Database& db) {
  std::vector<FrozenSheet> list;
  const bool all = db.each(kListed, {}, [&](const Cursor& row) { list.push_back(read(row)); });
  return all ? std::optional(std::move(list)) : std::nullopt;
}

std::optional<FrozenSheet> frozenSheet(Database& db, int64_t id) {
  std::optional<FrozenSheet> found;
  db.each(std::string(kColumns) + "WHERE id=? AND content <> ''", {id},
          [&](const Cursor& row) { found = read(row); });
  return found;
}

Written deleteSheet(Database& db, int64_t id, bool& found) {
  Transaction change(db);
  found = false;
  change.each("SELECT 1 FROM sheets WHERE id = ? AND content <> ''", {id},
              [&](const Cursor&) { found = true; });
  bool newest = true;
  change.each(kNewer, {id}, [&](const Cursor&) { newest = false; });
  change.run(newest ? kEmpty : "DELETE FROM sheets WHERE id = ?", {id});
  return change.commit();
}

}  // namespace orvanta
