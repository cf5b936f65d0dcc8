#include "storage/database.h"

#include "storage/schema.h"
#include "support/store_rows.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

// What an early version of the program left behind.
void makeLegacyStore(const DataLocation& where) {
  fs::create_directories(where.legacyDir);
  const auto file = where.legacyDir / "lumaplan.db";
  std::ofstream(file) << "";
  OtherProgram(file).ask(
      std::string(kLegacyTables) +
      "CREATE TABLE events (id INTEGER PRIMARY KEY, start REAL NOT NULL, end REAL NOT NULL, "
      "app TEXT, bundle TEXT, title TEXT, url TEXT, domain TEXT, idle INTEGER DEFAULT 0, "
      "category TEXT, project_id INTEGER);"
      "CREATE TABLE rules (id INTEGER PRIMARY KEY, field TEXT, pattern TEXT);");
}

TEST(DatabaseFile, TightensTheModesOfWhatItFinds) {
  TempFolder folder;
  const auto where = folder.location();
  fs::create_directories(where.dir);
  std::ofstream(where.file()).close();
  chmod(where.dir.c_str(), 0755);
  chmod(where.file().c_str(), 0644);
  const TestDatabase db(where, LogLines().sink());
  EXPECT_EQ(modeOf(where.dir), 0700U);
  EXPECT_EQ(modeOf(where.file()), 0600U);
}

TEST(DatabaseFile, MovesLegacyDataOnceAndBringsThemUpToDate) {
  TempFolder folder;
  const auto where = folder.location();
  makeLegacyStore(where);
  LogLines log;
  {
    TestDatabase db(where, log.sink());
    EXPECT_EQ(log.lines(), Texts{"Orvanta: données migrées depuis Lumaplan"});
    EXPECT_FALSE(fs::exists(where.legacyDir));
    EXPECT_EQ(db.setting("idle_threshold"), "240");
    EXPECT_EQ(db.setting("port"), "");
    EXPECT_TRUE(db.query("SELECT 1 FROM sqlite_master WHERE name='calendar_links'").empty());
    EXPECT_EQ(db.query("SELECT name, keywords FROM projects").front().str("name"), "Ancien");
    ASSERT_TRUE(fs::exists(where.dir / "sauvegardes")) << "as it was before";
    EXPECT_FALSE(fs::is_empty(where.dir / "sauvegardes"));
  }
  // Another legacy folder is none of our business any more.
  makeLegacyStore(where);
  TestDatabase again(where, log.sink());
  EXPECT_TRUE(fs::exists(where.legacyDir));
  EXPECT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(again.setting("idle_threshold"), "240");
}

struct DatabaseTest : testing::Test, TempStore {};

TEST_F(DatabaseTest, FirstStartMakesEverythingForTheOwnerOnly) {
  const auto where = folder.location();
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(db.allSettings(), defaultSettings());
  EXPECT_EQ(db.query("SELECT 1 FROM sqlite_master WHERE type='table'").size(), 11U);
  EXPECT_EQ(db.query("PRAGMA journal_mode").front().str("journal_mode"), "wal");
  EXPECT_EQ(db.query("PRAGMA page_size").front().int_("page_size"), 1024);
  EXPECT_EQ(modeOf(where.dir), 0700U);
  for (const auto* name : {"orvanta.db", "orvanta.db-wal", "orvanta.db-shm"}) {
    EXPECT_EQ(modeOf(where.dir / name), 0600U) << name;
  }
}

TEST_F(DatabaseTest, SettingsFallBackToTheirDefaults) {
  EXPECT_EQ(db.setting("idle_threshold"), "180");
  EXPECT_EQ(db.setting("inconnu"), "");
  db.setSetting("idle_threshold", "90");
  db.run("INSERT OR REPLACE INTO settings VALUES ('privacy_mode', NULL)");
  TestDatabase reopened(folder.location(), log.sink());
  EXPECT_EQ(reopened.setting("idle_threshold"), "90");
  EXPECT_EQ(reopened.setting("privacy_mode"), "full");
  EXPECT_EQ(reopened.allSettings().at("privacy_mode"), "full");
  reopened.run("DELETE FROM settings");
  EXPECT_EQ(reopened.setting("idle_threshold"), "180");
}

TEST_F(DatabaseTest, ValuesComeBackAsTheyWent) {
  db.exec("CREATE TABLE t (v)");
  const std::string hostile = "'; DROP TABLE events; -- <b>é</b>\n";
  db.run("INSERT INTO t VALUES (?), (?), (?), (?), (?), (x'00ff')",
         {true, int64_t{1} << 62, 0.1, hostile, std::optional<std::string>()});
  const auto rows = db.query("SELECT v AS a, v FROM t ORDER BY rowid");
  ASSERT_EQ(rows.size(), 6U);
  EXPECT_EQ(rows[0].int_("v"), 1);
  EXPECT_EQ(rows[1].int_("v"), int64_t{1} << 62);
  EXPECT_EQ(rows[2].dbl("v"), 0.1);
  EXPECT_EQ(rows[3].str("v"), hostile);
  EXPECT_TRUE(rows[4].find("v")->isNull());
  EXPECT_TRUE(rows[5].find("v")->isNull());
  EXPECT_FALSE(rows[0].find("w"));
}

TEST_F(DatabaseTest, TypedAccessorsDoNotConvertBetweenTextAndNumbers) {
  const auto row = db.query(
                         "SELECT 7 AS i, 7.9 AS d, -7.9 AS n, 1e300 AS huge, '7' AS t, "
                         "NULL AS z, 'first' AS twice, 'last' AS twice")
                       .front();
  EXPECT_FALSE(row.str("i"));
  EXPECT_FALSE(row.int_("t"));
  EXPECT_EQ(row.dbl("t"), 0.0);
  EXPECT_EQ(row.dbl("i"), 7.0);
  EXPECT_EQ(row.int_("d"), 7);
  EXPECT_EQ(row.int_("n"), -7);
  EXPECT_FALSE(row.int_("huge"));
  EXPECT_FALSE(row.int_("z"));
  EXPECT_EQ(row.str("twice"), "last");
}

TEST_F(DatabaseTest, RevisionGrowsWithEveryChangeAndNothingElse) {
  TestDatabase other(folder.location());
  int64_t last = db.revision();
  const auto grown = [&] { return std::exchange(last, db.revision()) < last; };
  EXPECT_FALSE(grown());
  (void)db.allSettings();
  db.run("UPDATE events SET end = 1");
  EXPECT_FALSE(grown());
  db.setSetting("paused", "1");
  EXPECT_TRUE(grown());
  other.setSetting("paused", "0");
  EXPECT_TRUE(grown());
  EXPECT_FALSE(grown());
}

TEST_F(DatabaseTest, TellsWhatFailedButNotWhatIsExpected) {
  Texts reports;
  // The hook may use the store: it is called when the statement is over.
  db.setErrorReport(
      [&](const std::string& message) { reports.push_back(message + " " + db.setting("paused")); });
  EXPECT_EQ(db.run("INSERT INTO projects(name) VALUES ('A')"), 1);
  EXPECT_EQ(db.run("INSERT INTO projects(name) VALUES ('A')"), -1);
  EXPECT_EQ(db.run("ALTER TABLE projects ADD COLUMN client TEXT"), -1);
  EXPECT_EQ(db.run("SELEC"), -1);
  EXPECT_TRUE(log.lines().empty());

  EXPECT_EQ(db.run("INSERT INTO projects(color) VALUES ('#fff')"), -1);
  EXPECT_FALSE(db.exec("INSERT INTO nowhere VALUES (1)"));
  EXPECT_TRUE(db.query("SELECT * FROM nowhere").empty());
  EXPECT_EQ(log.lines(),
            (Texts{"Orvanta SQL: NOT NULL constraint failed: projects.name — INSERT INTO "
                   "projects(color) VALUES ('#fff')",
                   "Orvanta SQL: no such table: nowhere",
                   "Orvanta SQL: no such table: nowhere — SELECT * FROM nowhere"}));
  EXPECT_EQ(reports, (Texts{"sql: NOT NULL constraint failed: projects.name 0",
                            "sql: no such table: nowhere 0"}));
}

}  // namespace
}  // namespace orvanta::test
