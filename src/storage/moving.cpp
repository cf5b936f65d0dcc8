#include "storage/moving.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <compare>
#include <set>
#include <system_error>

#include "storage/backups.h"
#include "storage/file_connection.h"
#include "storage/schema.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

// What the program keeps for itself about the machine it runs on.
constexpr auto kOfThisMachine =
    "DELETE FROM settings WHERE key IN "
    "('believed_time','browser_perms','store_erasing','store_notice','told_no_tray')";

// A row into each table that every store has, as we write them.
constexpr std::array kProbes{
    "INSERT INTO events(start, end, app, bundle, title, url, domain, idle, category, project_id) "
    "VALUES (4e9, 4e9 + 0.5, 'a', 'b', 't', 'u', 'd', 0, 'travail', 7)",
    "UPDATE events SET end = end + 0.5 WHERE start = 4e9",
    "INSERT INTO projects(name, color, category, archived, created) "
    "VALUES (hex(randomblob(16)), '#fff', 'travail', 0, 4e9)",
    "INSERT INTO rules(field, pattern, category, project_id, priority, created) "
    "VALUES ('app', 'a', 'travail', 7, 0, 4e9)",
    "INSERT OR REPLACE INTO settings(key, value) VALUES ('onboarded', 'probe')"};
// Tables that take such rows and do something else with others.
constexpr auto kForeign =
    "SELECT count(*) FROM sqlite_master WHERE type NOT IN ('table', 'index', 'trigger', 'view') OR "
    "type = 'table' AND (sql LIKE 'CREATE VIRTUAL%' OR name IN ('events', 'projects', 'rules', "
    "'settings') AND "
    "(sql LIKE '%CONFLICT%' OR sql LIKE '%CHECK%' OR sql LIKE '%REFERENCES%' OR "
    "EXISTS (SELECT 1 FROM pragma_table_xinfo(sqlite_master.name) WHERE hidden <> 0)))";

struct Object {
  std::string type;
  std::string name;
  std::string definition;
  friend auto operator<=>(const Object&, const Object&) = default;
};

// All but tables; an index that belongs to the definition of its table has none of its own.
std::set<Object> objectsIn(const FileConnection& connection) {
  std::set<Object> found;
  connection.each(
      "SELECT type, name, sql FROM sqlite_master WHERE type <> 'table' AND sql <> ''", {},
      [&](const Cursor& row) {
        found.insert({std::string(row.str(0).value_or("")), std::string(row.str(1).value_or("")),
                      std::string(row.str(2).value_or(""))});
      });
  return found;
}

std::set<Object> ownObjects() {
  const auto connection = FileConnection::inMemory();
  return createSchema(connection.get()) ? objectsIn(connection) : std::set<Object>();
}

// What is missing afterwards is made when the store is opened.
bool dropForeign(const FileConnection& connection) {
  static const auto kOwn = ownObjects();
  for (const auto& object : objectsIn(connection)) {
    if (kOwn.contains(object)) continue;
    connection.exec(
        fmt::format("DROP {} IF EXISTS {}", object.type, quotedName(object.name)).c_str());
  }
  const auto left = objectsIn(connection);
  return std::includes(kOwn.begin(), kOwn.end(), left.begin(), left.end());
}

bool takesOurRows(const FileConnection& connection) {
  bool takes = connection.exec("BEGIN IMMEDIATE") == SQLITE_OK;
  for (const auto* probe : kProbes) {
    takes = takes && connection.exec(probe) == SQLITE_OK && sqlite3_changes(connection.get()) == 1;
  }
  return connection.exec("ROLLBACK") == SQLITE_OK && takes;
}

}  // namespace

CopyResult takeAll(const fs::path& store, const fs::path& target, const CopyOptions& options) {
  std::error_code ignored;
  if (fs::equivalent(store, target, ignored)) return {.error = "c’est la base elle-même"};
  auto leaving = options;
  leaving.replace = true;
  leaving.finish = [](const fs::path& copy) {
    return eraseFromCopy(copy, {.steps = {{.sql = kOfThisMachine, .args = {}}}});
  };
  return backUpTo(store, target, leaving);
}

std::string makeOurs(const fs::path& file) {
  const auto connection = FileConnection::writing(file);
  if (!connection) return "elle ne peut pas être lue";
  if (connection.number("PRAGMA user_version") > kSchemaVersion) {
    return "elle vient d’une version plus récente d’Orvanta";
  }
  const bool ours =
      connection.number(kForeign) == 0 && dropForeign(connection) && takesOurRows(connection);
  return ours ? "" : "ce n’est pas une base d’Orvanta";
}

}  // namespace orvanta
