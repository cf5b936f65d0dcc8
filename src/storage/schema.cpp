#include "storage/schema.h"

#include "storage/database.h"

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
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT);";

// Holds about one span a day, so that a range query finds the long spans that reach into it without
// walking the history. A little below kLongSpan, so that rounding in `end - start` loses none.
constexpr auto kLongSpanIndex =
    "CREATE INDEX IF NOT EXISTS idx_events_long ON events(end, start) WHERE end - start > 14000";

// Nothing on a default store: few spans are assigned by hand or recorded under a project. What asks
// for those of a project or of an assignment finds them here, whatever the history.
constexpr auto kManualIndex =
    "CREATE INDEX IF NOT EXISTS idx_events_manual "
    "ON events(project_id, category, domain, app, start) "
    "WHERE category IS NOT NULL OR project_id IS NOT NULL";

}  // namespace

const std::map<std::string, std::string>& defaultSettings() {
  static const std::map<std::string, std::string> defaults{
      {"idle_threshold", "180"},   {"min_span_seconds", "10"},
      {"min_block_seconds", "60"}, {"privacy_mode", "full"},
      {"excluded_domains", "[]"},  {"retention_days", "0"},
      {"onboarded", "0"},          {"paused", "0"},
      {"telemetry", "0"},          {"install_id", ""},
  };
  return defaults;
}

void migrate(Database& db) {
  db.exec(kSchema);
  for (const std::string column : {"external_id TEXT", "client TEXT", "keywords TEXT"}) {
    db.run("ALTER TABLE projects ADD COLUMN " + column);
  }
  db.exec(kLongSpanIndex);
  db.exec(kManualIndex);
  for (const auto& [key, value] : defaultSettings()) {
    db.run("INSERT OR IGNORE INTO settings(key, value) VALUES (?, ?)", {key, value});
  }
  db.run(
      "DELETE FROM settings WHERE key IN "
      "('ps_session','ps_last_import','ics_urls','use_calendar_app','port','poll_interval')");
  db.run("DROP TABLE IF EXISTS calendar_links");
}

}  // namespace orvanta
