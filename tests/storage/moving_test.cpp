// What goes to another machine, and files from anywhere.
#include "storage/moving.h"

#include "storage/kept_stores.h"
#include "storage/restore.h"
#include "support/program.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

Texts tablesIn(const fs::path& file) {
  return rowsOf(file, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY 1");
}

// What a person would miss, row by row; of the settings what is not of the machine.
std::map<std::string, Texts> allIn(const fs::path& file) {
  std::map<std::string, Texts> all;
  for (auto table : tablesIn(file)) {
    table.pop_back();
    const auto* what = table == "settings" ? " WHERE key NOT IN ('believed_time', 'browser_perms', "
                                             "'store_erasing', 'store_notice', 'told_no_tray')"
                                           : "";
    if (table != "indexed_days")
      all[table] = rowsOf(file, "SELECT * FROM " + table + what + " ORDER BY 1");
  }
  return all;
}

TEST(Moving, TakesEverythingToAnotherMachine) {
  Program here;
  const auto write = [&](const std::string& sql) { ASSERT_TRUE(here.store.db.exec(sql)) << sql; };
  write(
      "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) VALUES "
      "(1000,1600,'Firefox','org.mozilla.firefox','É <b>','https://a.fr/é','a.fr',0,NULL,NULL),"
      "(1600,1700,'Inactif',NULL,NULL,NULL,NULL,1,NULL,NULL),"
      "(90000,90600,'Firefox',NULL,'B',NULL,'a.fr',0,NULL,NULL)");
  here.call("projects.save",
            R"({"name": "Thèse", "client": "Été", "terms": {"rate": 9000, "budget": 36000}})");
  here.call("goals.save", R"({"subject": "site", "value": "a.fr", "period": "day",
                              "bound": "most", "seconds": 3600})");
  here.call("rules.save", R"({"field": "domain", "pattern": "b.fr", "category": "loisir"})");
  here.call("events.assign", R"({"ids": [1], "category": "loisir"})");
  here.call("events.assign", R"({"ids": [3], "category": "loisir"})");  // learns a rule
  here.call("events.assign", R"({"ids": [2], "category": "autre"})");
  EXPECT_TRUE(here.undo(here.lastChange()));
  here.call("sheets.freeze", R"({"from": "1970-01-01", "to": "1970-01-02"})");
  here.call("settings.set", R"({"idle_threshold": 240})");
  here.call("page.mark", R"({"key": "sheet", "value": {"rounding": 15}})");
  here.store.db.setSetting("told_no_tray", "1");
  here.store.db.setSetting("browser_perms", R"({"org.mozilla.firefox": true})");

  EXPECT_EQ(here.call("store.takeAll"), json::value({{"ok", false}})) << "cancelled";
  here.shell.saveTo = here.store.folder.path() / "tout.db";
  std::ofstream(*here.shell.saveTo) << "the user was asked whether this is to be replaced";
  const auto taken = here.call("store.takeAll");
  ASSERT_EQ(taken.at("ok"), true) << json::serialize(taken);
  const auto all = allIn(*here.shell.saveTo);
  EXPECT_EQ(all, allIn(here.store.db.location().file()));
  for (const auto* table : {"events", "projects", "project_terms", "rules", "rule_origins", "goals",
                            "sheets", "changes"}) {
    EXPECT_FALSE(all.at(table).empty()) << table;
  }
  EXPECT_TRUE(rowsOf(*here.shell.saveTo,
                     "SELECT 1 FROM settings WHERE key IN ('told_no_tray', 'browser_perms')")
                  .empty());
  EXPECT_EQ(modeOf(*here.shell.saveTo), 0600U);
  here.shell.saveTo = here.store.db.location().file();
  EXPECT_TRUE(holds(json::serialize(here.call("store.takeAll")), "la base elle-même"));
  EXPECT_EQ(allIn(here.store.db.location().file()), all);

  Program there;
  there.store.db.run("INSERT INTO events(start,end,app) VALUES (1,2,'Accueil')");
  EXPECT_EQ(there.call("store.pick"), json::value({{"ok", false}}));
  const auto file = here.store.folder.path() / "tout.db";
  const json::object named{{"file", file.string()}};
  EXPECT_EQ(there.ask("store.restore", named).at("error"), "Cette sauvegarde n’existe plus.");
  there.shell.chosen = file;
  EXPECT_EQ(there.call("store.pick").at("file"), json::value(file.string()));
  EXPECT_EQ(there.ask("store.restorePreview", named).at("spans"), 3);
  EXPECT_EQ(there.ask("store.restore", named).at("ok"), true);
  EXPECT_EQ(allIn(there.store.db.location().file()), all);
  EXPECT_EQ(there.call("page.marks"), json::parse(R"({"sheet": {"rounding": 15}})"));
  EXPECT_EQ(keptStores(there.store.db.location()).size(), 1U);
  // Also the way back goes along.
  const auto change = there.call("changes.list").at(2);
  EXPECT_TRUE(there.undo(change.at("id")));
}

TEST(Moving, AFileFromAnywhereIsMadeOursOrRefused) {
  TempFolder folder;
  const auto where = folder.location();
  fillStore(newStore(where.file()), 10);
  const auto good = folder.path() / "good.db";
  ASSERT_TRUE(copyStore(where.file(), good).made);
  const auto before = rowsOf(good, "SELECT * FROM events");
  const auto form = rowsOf(good, "SELECT type, name, sql FROM sqlite_master ORDER BY 1, 2");
  const auto names = namesIn(where.dir);
  const auto other = [](const std::string& column) {
    return "CREATE TABLE other AS SELECT * FROM events; DROP TABLE events; CREATE TABLE events (id "
           "INTEGER "
           "PRIMARY KEY, start REAL, end REAL, app TEXT, bundle TEXT, title TEXT, url TEXT, domain "
           "TEXT, idle INTEGER, category TEXT, project_id INTEGER" +
           column + ")";
  };
  const std::string newer = "elle vient d’une version plus récente d’Orvanta";
  const std::string foreign = "ce n’est pas une base d’Orvanta";
  const std::pair<std::string, std::string> files[]{
      {"CREATE TRIGGER eats AFTER INSERT ON events BEGIN DELETE FROM events; END", ""},
      {"DROP TRIGGER day_added; CREATE TRIGGER day_added AFTER INSERT ON events BEGIN DELETE FROM "
       "projects; END",
       ""},
      {"CREATE VIEW \"a\"\"; DROP TABLE events; --\" AS SELECT * FROM events", ""},
      {"CREATE UNIQUE INDEX one ON events(app) WHERE id > 10", ""},
      {"CREATE INDEX breaks ON events(abs(title), app COLLATE NOCASE)", ""},
      {"CREATE VIRTUAL TABLE words USING fts5(text)", foreign},
      {"PRAGMA user_version = 3", newer},
      {other(""), ""},
      {other(", CHECK (start < 0)"), foreign},
      {other(", UNIQUE (app) ON CONFLICT REPLACE"), foreign},
      {other(", more AS (start + 1)"), foreign},
      {other(", more TEXT NOT NULL"), foreign},
      {"PRAGMA writable_schema = ON; UPDATE sqlite_master SET type = 'table events; ATTACH ''" +
           (folder.path() / "made").string() +
           "'' AS x; CREATE TABLE x.y(z); --' WHERE name = 'idx_events_end'",
       "le fichier est abîmé"},
  };
  for (const auto& [sql, error] : files) {
    const auto file = folder.path() / "hostile.db";
    fs::copy(good, file, fs::copy_options::overwrite_existing);
    {
      sqlite3* raw = nullptr;  // without the guards of ours
      sqlite3_open(file.c_str(), &raw);
      EXPECT_EQ(sqlite3_exec(raw, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
          << sql << sqlite3_errmsg(raw);
      sqlite3_close(raw);
    }
    const auto result = restoreStore(where, file, {.now = 1e9, .calendar = {}});
    EXPECT_EQ(result.done, error.empty()) << sql << result.error;
    EXPECT_TRUE(holds(result.error, error)) << sql << result.error;
    EXPECT_FALSE(fs::exists(folder.path() / "made"));
    if (!result.done) {
      EXPECT_EQ(namesIn(where.dir), names) << sql;
      EXPECT_EQ(rowsOf(where.file(), "SELECT * FROM events"), before) << sql;
      continue;
    }
    LogLines log;
    {
      TestDatabase db(where, log.sink());
      EXPECT_GT(db.run("INSERT INTO events(start, end, app, title) VALUES (5, 6, 'Éditeur', '{')"),
                0)
          << sql;
    }
    if (!sql.starts_with("CREATE TABLE")) {
      EXPECT_EQ(rowsOf(where.file(), "SELECT * FROM events WHERE app <> 'x' AND start > 5"), before)
          << sql;
      EXPECT_EQ(rowsOf(where.file(), "SELECT type, name, sql FROM sqlite_master ORDER BY 1, 2"),
                form)
          << sql;
    }
    EXPECT_EQ(log.lines(), Texts()) << sql;
    for (const auto& kept : keptStores(where)) removeDatabase(kept);
    removeDatabase(where.file());
    fs::copy(good, where.file());
  }
}

}  // namespace
}  // namespace orvanta::test
