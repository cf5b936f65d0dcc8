#include "storage/schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string_view>

#include "storage/database.h"
#include "storage/transaction.h"

namespace orvanta {
namespace {

constexpr auto kSchema =
    "CREATE TABLE IF NOT EXISTS events (\n"
    "  id INTEGER PRIMARY KEY, start REAL NOT NULL, end REAL NOT NULL,\n"
    "  app TEXT, bundle TEXT, title TEXT, url TEXT, domain TEXT,\n"
    "  idle INTEGER DEFAULT 0, category TEXT, project_id INTEGER);\n"
    "CREATE INDEX IF NOT EXISTS idx_events_start ON events(start);\n"
    "CREATE INDEX IF NOT EXISTS idx_events_end ON events(end);\n"
    "CREATE TABLE IF NOT EXISTS projects (\n"
    "  id INTEGER PRIMARY KEY, name TEXT UNIQUE NOT NULL, color TEXT DEFAULT '#3b82f6',\n"
    "  category TEXT DEFAULT 'travail', archived INTEGER DEFAULT 0, created REAL,\n"
    "  external_id TEXT, client TEXT, keywords TEXT);\n"
    "CREATE TABLE IF NOT EXISTS rules (\n"
    "  id INTEGER PRIMARY KEY, field TEXT NOT NULL, pattern TEXT NOT NULL,\n"
    "  category TEXT, project_id INTEGER, priority INTEGER DEFAULT 0, created REAL);\n"
    "CREATE TABLE IF NOT EXISTS rule_origins (\n"
    "  rule_id INTEGER PRIMARY KEY, origin TEXT NOT NULL, at REAL,\n"
    "  pending INTEGER NOT NULL CHECK (pending IN (0, 1)));\n"
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT);"
    "CREATE TABLE IF NOT EXISTS changes (\n"
    "  id INTEGER PRIMARY KEY, at REAL NOT NULL, kind TEXT NOT NULL, label TEXT NOT NULL,\n"
    "  spans INTEGER, seconds REAL, learned TEXT, undone INTEGER DEFAULT 0, bytes INTEGER,\n"
    "  held_from REAL, held_to REAL, titled_from REAL, words TEXT, effect TEXT,\n"
    "  examples TEXT, changeset BLOB);\n"
    // Their sizes are added up at every change.
    "CREATE INDEX IF NOT EXISTS idx_changes_at ON changes(at, bytes);";

// What is agreed for projects, and timesheets as they were sent.
constexpr auto kBilling =
    "CREATE TABLE IF NOT EXISTS project_terms (\n"
    "  project_id INTEGER PRIMARY KEY, currency TEXT NOT NULL, rate INTEGER,\n"
    "  billable INTEGER NOT NULL, budget INTEGER, budget_from TEXT,\n"
    "  rounding INTEGER, rounding_mode TEXT, rounding_scope TEXT);\n"
    "CREATE TABLE IF NOT EXISTS sheets (\n"
    "  id INTEGER PRIMARY KEY, created REAL NOT NULL, title TEXT NOT NULL,\n"
    "  client TEXT NOT NULL, first_day TEXT NOT NULL, last_day TEXT NOT NULL,\n"
    "  version INTEGER NOT NULL, project_id INTEGER, content TEXT NOT NULL);";

// What is to be reached, and what the user was told of it.
constexpr auto kGoals =
    "CREATE TABLE IF NOT EXISTS goals (\n"
    "  id INTEGER PRIMARY KEY, subject TEXT NOT NULL, name TEXT NOT NULL, project_id INTEGER,\n"
    "  period TEXT NOT NULL, bound TEXT NOT NULL, seconds INTEGER NOT NULL,\n"
    "  created REAL NOT NULL);\n"
    "CREATE TABLE IF NOT EXISTS goal_told (\n"
    "  id INTEGER PRIMARY KEY, goal_id INTEGER NOT NULL, day TEXT NOT NULL,\n"
    "  percent INTEGER NOT NULL, UNIQUE (goal_id, day));";

// Holds about one span a day, so that a range query finds the long spans that reach into it without
// walking the history.
const std::string kLongSpanIndex =
    std::string("CREATE INDEX IF NOT EXISTS idx_events_long ON events(end, start) WHERE ") +
    kIsLong;

// Nothing on a default store: few spans are assigned by hand or recorded under a project. What asks
// for those of a project or of an assignment finds them here, whatever the history.
constexpr auto kManualIndex =
    "CREATE INDEX IF NOT EXISTS idx_events_manual "
    "ON events(project_id, category, domain, app, start) "
    "WHERE category IS NOT NULL OR project_id IS NOT NULL";

// What ActivityIndex goes by. Nothing is written for a day that has no stamp, as today has none. A
// time of another kind than a number gives some day, and its span is in no day's range.
const std::string kDays = [] {
  const auto forget = [](std::string_view name, std::string_view when, std::string_view times) {
    return fmt::format(
        "CREATE TRIGGER IF NOT EXISTS {} {} ON events BEGIN "
        "DELETE FROM indexed_days WHERE day IN ({}); END;\n",
        name, when, times);
  };
  constexpr auto kOld = "CAST(old.start AS INTEGER) / 86400";
  constexpr auto kNew = "CAST(new.start AS INTEGER) / 86400";
  // SQLite tells no trigger of the row that another one takes the place of.
  constexpr auto kReplaced = "SELECT CAST(start AS INTEGER) / 86400 FROM events WHERE id = new.id";
  return "CREATE TABLE IF NOT EXISTS indexed_days (day INTEGER PRIMARY KEY, stamp INTEGER NOT "
         "NULL);\n" +
         forget("day_replaced", "BEFORE INSERT", kReplaced) +
         forget("day_overwritten", "BEFORE UPDATE OF id", kReplaced) +
         forget("day_added", "AFTER INSERT", kNew) + forget("day_removed", "AFTER DELETE", kOld) +
         forget("day_changed", "AFTER UPDATE", fmt::format("{}, {}", kOld, kNew));
}();

// Columns of `projects` that the first version did not have.
constexpr std::array<const char*, 3> kLaterColumns{"external_id", "client", "keywords"};
constexpr std::array<std::string_view, 11> kObjects{
    "events",          "projects",          "rules",           "settings",
    "rule_origins",    "changes",           "idx_changes_at",  "idx_events_end",
    "idx_events_long", "idx_events_manual", "idx_events_start"};
constexpr std::array<std::string_view, 6> kDaysObjects{
    "indexed_days", "day_added", "day_changed", "day_overwritten", "day_removed", "day_replaced"};
constexpr std::array<std::string_view, 4> kOwnTables{"project_terms", "sheets", "goals",
                                                     "goal_told"};
constexpr auto kObsolete =
    "('ps_session','ps_last_import','ics_urls','use_calendar_app','port','poll_interval')";

using Names = std::set<std::string, std::less<>>;

// Text of every row's first column; absent when those were not all.
std::optional<Names> readNames(Database& db, std::string_view sql) {
  Names found;
  const auto take = [&](const Cursor& row) { found.emplace(row.str(0).value_or("")); };
  return db.each(sql, {}, take) ? std::optional(std::move(found)) : std::nullopt;
}

Names names(Database& db, std::string_view sql) {
  return readNames(db, sql).value_or(Names());
}

bool settingsComplete(Database& db) {
  const auto keys = names(db, "SELECT key FROM settings");
  const auto& defaults = defaultSettings();
  return std::all_of(defaults.begin(), defaults.end(),
                     [&](const auto& entry) { return keys.contains(entry.first); }) &&
         names(db, std::string("SELECT key FROM settings WHERE key IN ") + kObsolete).empty();
}

int versionOf(Database& db) {
  int64_t version = 0;
  db.each("PRAGMA user_version", {}, [&](const Cursor& row) { version = row.int_(0).value_or(0); });
  return static_cast<int>(version);
}

bool writesAhead(Database& db) {
  return names(db, "PRAGMA journal_mode").contains("wal");
}

// What was changed while one of the triggers was missing has left no trace.
void keepDays(Database& db, Transaction& change) {
  const auto objects = names(db, "SELECT name FROM sqlite_master");
  const bool kept = std::all_of(kDaysObjects.begin(), kDaysObjects.end(),
                                [&](auto name) { return objects.contains(name); });
  change.exec(kDays);
  if (!kept) change.exec("DELETE FROM indexed_days");
}

}  // namespace

bool createSchema(sqlite3* connection) {
  const auto text = fmt::format(
      "PRAGMA page_size=1024; BEGIN; {} {} {} {}; {}; {} PRAGMA user_version={}; COMMIT", kSchema,
      kBilling, kGoals, kLongSpanIndex, kManualIndex, kDays, kSchemaVersion);
  return sqlite3_exec(connection, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::optional<StoreAge> ageOf(Database& db) {
  const auto objects = readNames(db, "SELECT name FROM sqlite_master");
  if (!objects) return {};
  if (objects->empty()) return StoreAge::New;
  const auto columns = readNames(db, "SELECT name FROM pragma_table_info('projects')");
  if (!columns) return {};
  const auto has = [&](const auto& wanted) {
    return std::all_of(wanted.begin(), wanted.end(), [&](auto name) {
      return objects->contains(name) || columns->contains(name);
    });
  };
  const std::span tables(kObjects.begin(), 4);
  if (has(tables) && (!has(kLaterColumns) || versionOf(db) < kSchemaVersion))
    return StoreAge::Older;
  const bool current = has(kObjects) && has(kDaysObjects) && has(kOwnTables) &&
                       !objects->contains("calendar_links") && writesAhead(db) &&
                       settingsComplete(db);
  return current ? StoreAge::Current : StoreAge::Unkempt;
}

Written migrate(Database& db) {
  Transaction change(db, Patience::None);
  change.exec(kSchema);
  change.exec(kBilling);
  change.exec(kGoals);
  const auto columns = names(db, "SELECT name FROM pragma_table_info('projects')");
  for (const std::string column : kLaterColumns) {
    if (!columns.contains(column))
      change.exec("ALTER TABLE projects ADD COLUMN " + column + " TEXT");
  }
  change.exec(kLongSpanIndex);
  change.exec(kManualIndex);
  keepDays(db, change);
  for (const auto& [key, value] : defaultSettings()) {
    change.run("INSERT OR IGNORE INTO settings(key, value) VALUES (?, ?)", {key, value});
  }
  change.exec(std::string("DELETE FROM settings WHERE key IN ") + kObsolete);
  change.exec("DROP TABLE IF EXISTS calendar_links");
  if (versionOf(db) < kSchemaVersion) {
    change.exec(fmt::format("PRAGMA user_version={}", kSchemaVersion));
  }
  auto written = change.commit();
  // Asked as one reads, which does not wait. Where a reader of another program is in the way, the
  // next start asks again.
  if (written) names(db, "PRAGMA journal_mode=WAL");
  return written;
}

}  // namespace orvanta
