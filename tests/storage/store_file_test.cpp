// The store's file at the start, while other programs use it, and where it is none: told once, left
// alone, lived without.
#include <fmt/format.h>
#include <chrono>

#include "storage/database.h"
#include "storage/overlap.h"
#include "storage/transaction.h"
#include "support/children.h"
#include "support/fault_vfs.h"
#include "support/store_rows.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

struct Place {
  TempFolder folder;
  DataLocation where = folder.location();
  LogLines log;
};

struct StoreFile : testing::Test, Place {};

TEST_F(StoreFile, AStartOnACurrentStoreWritesNothing) {
  {
    const Database made(where);
  }
  FaultVfs::count();
  {
    Database db(where);
    EXPECT_EQ(db.setting("idle_threshold"), "180");
    EXPECT_EQ(FaultVfs::bytes(), 0);
    // The log and its index are made.
    EXPECT_LE(FaultVfs::writes(), 2);
  }
  EXPECT_EQ(FaultVfs::bytes(), 0);
}

TEST_F(StoreFile, AStartWaitsForNobody) {
  const char* contents[] = {"", "DROP TABLE rules", "DROP INDEX idx_events_long"};
  for (const auto* journal : {"WAL", "DELETE"}) {
    for (const auto* content : contents) {
      for (const auto* lock :
           {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE", "BEGIN; SELECT * FROM settings"}) {
        SCOPED_TRACE(fmt::format("{} {} {}", journal, content, lock));
        Place here;
        {
          const Database made(here.where);
        }
        OtherProgram other(here.where.file());
        other.ask(fmt::format("{}; PRAGMA journal_mode={}", content, journal));
        other.ask(lock);
        const auto begin = SteadyClock::now();
        Database db(here.where, here.log.sink());
        db.look();
        EXPECT_LT(SteadyClock::now() - begin, 200ms);
        EXPECT_FALSE(db.condition()) << "other programs write, too";
        other.ask("ROLLBACK");
        db.look();
        EXPECT_TRUE(db.setSetting("paused", "1"));
        EXPECT_TRUE(db.query("SELECT * FROM rules").empty());
        EXPECT_EQ(db.query("SELECT 1 FROM sqlite_master WHERE name='idx_events_long'").size(), 1U);
        EXPECT_TRUE(here.log.lines().empty()) << here.log.lines().front();
      }
    }
  }
}

TEST_F(StoreFile, AStartOnAFullDiskSaysSoAndIsMadeUpForLater) {
  for (int n = 1; n < 60; ++n) {
    SCOPED_TRACE(n);
    Place here;
    FaultVfs::fail(Fault::Full, n);
    Database db(here.where, here.log.sink());
    const bool struck = FaultVfs::struck();
    const auto written = db.setSetting("onboarded", "1");
    if (struck) {
      EXPECT_FALSE(written);
      EXPECT_EQ(db.whyNot(written), sentenceOf(StoreTrouble::Full));
      ASSERT_TRUE(db.condition());
      EXPECT_EQ(db.condition()->trouble, StoreTrouble::Full);
    }
    EXPECT_EQ(db.setting("onboarded"), "1");
    for (int tick = 0; tick < 10; ++tick) {
      (void)db.settingsNow();
      db.look();
    }
    EXPECT_LE(here.log.lines().size(), 1U) << here.log.lines().back();
    FaultVfs::lift();
    db.look();
    EXPECT_FALSE(db.condition());
    EXPECT_TRUE(holds(rowsOf(here.where.file()), "onboarded|'1'"));
    if (!struck) break;
  }
}

TEST_F(StoreFile, WhatIsWrongIsToldOnceAndStaysUntilItIsMended) {
  TempStore store;
  const auto write = [&] {
    return store.db.run("INSERT INTO rules(field, pattern) VALUES ('a','b')");
  };
  for (int time = 1; time <= 2; ++time) {
    EXPECT_EQ(write(), time);
    {
      const Failing failing(Fault::Full);
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(write(), -1);
        EXPECT_FALSE(store.db.setSetting("paused", "1"));
        store.db.look();
        OtherProgram other(store.db.location().file());
        other.ask("BEGIN IMMEDIATE");
        store.db.look();
        ASSERT_TRUE(store.db.condition());
        EXPECT_EQ(store.db.condition()->trouble, StoreTrouble::Full);
      }
    }
    ASSERT_EQ(store.log.lines().size(), static_cast<std::size_t>(time));
    EXPECT_TRUE(holds(store.log.lines().back(), "full"));
    store.db.look();
    EXPECT_FALSE(store.db.condition());
  }
}

// SQLite may end the whole transaction by itself when a part of it fails.
TEST_F(StoreFile, WhatFailsWithinATransactionEndsIt) {
  Database db(where, log.sink());
  const auto count = [&] { return db.query("SELECT * FROM projects").size(); };
  for (const bool ends : {false, true}) {
    Transaction outer(db);
    outer.run("INSERT INTO projects(name) VALUES ('a')");
    {
      Transaction inner(db);
      inner.run("INSERT INTO projects(name) VALUES ('b')");
      // As it does where the disk is full.
      if (ends) sqlite3_exec(inner.connection(), "ROLLBACK", nullptr, nullptr, nullptr);
      EXPECT_EQ(bool{inner.commit()}, !ends);
    }
    outer.run("INSERT INTO projects(name) VALUES ('c')");
    EXPECT_EQ(bool{outer.commit()}, !ends);
    EXPECT_EQ(count(), 3U);
    EXPECT_TRUE(ends || db.exec("UPDATE projects SET name = name || 'x'"));
  }
  EXPECT_TRUE(log.lines().empty()) << log.lines().front();
}

void expectUsableWithoutData(TestDatabase& db) {
  EXPECT_EQ(db.run("INSERT INTO projects(name) VALUES ('A')"), -1);
  EXPECT_FALSE(db.exec("DELETE FROM events"));
  EXPECT_EQ(db.setting("idle_threshold"), "180");
  db.setSetting("paused", "1");
}

TEST_F(StoreFile, AFileThatIsNoDatabaseIsLeftAsItIs) {
  fs::create_directories(where.dir);
  const std::string content(5000, 'x');
  std::ofstream(where.file()) << content;
  {
    TestDatabase db(where, log.sink());
    expectUsableWithoutData(db);
    EXPECT_TRUE(db.query("SELECT * FROM events").empty());
  }
  EXPECT_EQ(bytesIn(where.file()), content);
  EXPECT_EQ(log.lines(), Texts{"Orvanta: impossible d'ouvrir la base " + where.file().string()});
}

TEST_F(StoreFile, AFolderThatCannotBeMadeIsToldOnce) {
  std::ofstream(folder.path() / "file") << "";
  TestDatabase db(DataLocation::under(folder.path() / "file"), log.sink());
  expectUsableWithoutData(db);
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(StoreFile, DamageInTheMiddleOfAReportIsToldOnce) {
  {
    TestDatabase db(where, LogLines().sink());
    db.run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 9000) "
        "INSERT INTO events(start,end,app) SELECT i, i + 1, 'Éditeur' FROM n");
  }
  overwrite(where.file(), fs::file_size(where.file()) / 4 * 3, std::string(16384, '\xff'));
  TestDatabase db(where, log.sink());
  int spans = 0;
  for (int report = 0; report < 2; ++report) {
    db.scan("SELECT * FROM events", {}, [&](const Cursor&) { ++spans; });
  }
  EXPECT_GT(spans, 0);
  EXPECT_LT(spans, 2 * 9000);
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_TRUE(holds(log.lines().front(), "malformed — SELECT * FROM events"));
}

// A store of which nothing may be written.
struct ReadOnlyStore : Place {
  explicit ReadOnlyStore(const std::string& sql) {
    TestDatabase(where, LogLines().sink()).exec(sql);
    chmod(folder.path().c_str(), 0755);
    chmod(where.dir.c_str(), 0555);
    chmod(where.file().c_str(), 0444);
  }
  ~ReadOnlyStore() { chmod(where.dir.c_str(), 0700); }
};

TEST_F(StoreFile, AReadOnlyFileIsToldOnceAndStillRead) {
  ReadOnlyStore store("UPDATE settings SET value='77' WHERE key='min_span_seconds'");
  const auto before = bytesIn(store.where.file());
  EXPECT_TRUE(isSoForNobody([&] {
    TestDatabase db(store.where, store.log.sink());
    db.setSetting("idle_threshold", "78");
    db.setSetting("idle_threshold", "79");
    // What was set holds, though it cannot be stored.
    return store.log.lines().size() == 1 && db.setting("idle_threshold") == "79" &&
           db.setting("min_span_seconds") == "77" &&
           db.condition()->trouble == StoreTrouble::ReadOnly;
  }));
  EXPECT_EQ(bytesIn(store.where.file()), before);
}

TEST_F(StoreFile, AnOldReadOnlyFileIsReadWithoutTheIndexThatItLacks) {
  ReadOnlyStore store(
      "INSERT INTO events(start, end, app) VALUES (0, 50000, 'A'), (40000, 40010, 'B');"
      "DROP INDEX idx_events_long; PRAGMA journal_mode=DELETE");
  EXPECT_TRUE(isSoForNobody([&] {
    TestDatabase db(store.where, store.log.sink());
    const OverlapQuery query("app");
    std::string apps;
    for (const auto& sql : {query.longBefore, query.fromShortlyBefore}) {
      const auto take = [&](const Cursor& row) { apps += *row.str(0); };
      db.scan(sql, OverlapQuery::args({40000, 41000}), take);
      db.each(sql, OverlapQuery::args({40000, 41000}), take);
    }
    return store.log.lines().size() == 1 && apps == "AABB";
  }));
}

}  // namespace
}  // namespace orvanta::test
