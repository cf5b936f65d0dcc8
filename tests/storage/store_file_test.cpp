// The store's file at the start, and while other programs use it.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>

#include "storage/database.h"
#include "storage/transaction.h"
#include "support/fault_vfs.h"
#include "support/store_rows.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

using namespace std::chrono_literals;
using test::Failing;
using test::Fault;
using test::FaultVfs;
using test::OtherProgram;
using test::TempFolder;
using test::TestDatabase;
using SteadyClock = std::chrono::steady_clock;

TEST(StoreFile, AStartOnACurrentStoreWritesNothing) {
  auto& vfs = FaultVfs::instance();
  TempFolder folder;
  { const Database made(folder.location()); }
  vfs.count();
  {
    Database db(folder.location());
    EXPECT_EQ(db.setting("idle_threshold"), "180");
    EXPECT_EQ(vfs.bytes(), 0);
    // The log and its index are made.
    EXPECT_LE(vfs.writes(), 2);
  }
  EXPECT_EQ(vfs.bytes(), 0);
}

TEST(StoreFile, AStartWaitsForNobody) {
  const char* contents[] = {"", "DROP TABLE rules", "DROP INDEX idx_events_long"};
  for (const auto* journal : {"WAL", "DELETE"}) {
    for (const auto* content : contents) {
      for (const auto* lock :
           {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE", "BEGIN; SELECT * FROM settings"}) {
        SCOPED_TRACE(fmt::format("{} {} {}", journal, content, lock));
        TempFolder folder;
        const auto file = folder.location().file();
        { const Database made(folder.location()); }
        OtherProgram other(file);
        other.ask(fmt::format("{}; PRAGMA journal_mode={}", content, journal));
        other.ask(lock);
        test::LogLines log;
        const auto begin = SteadyClock::now();
        Database db(folder.location(), log.sink());
        db.look();
        EXPECT_LT(SteadyClock::now() - begin, 200ms);
        EXPECT_FALSE(db.condition()) << "other programs write, too";
        other.ask("ROLLBACK");
        db.look();
        EXPECT_TRUE(db.setSetting("paused", "1"));
        EXPECT_TRUE(db.query("SELECT * FROM rules").empty());
        EXPECT_EQ(db.query("SELECT 1 FROM sqlite_master WHERE name='idx_events_long'").size(), 1U);
        EXPECT_TRUE(log.lines().empty()) << log.lines().front();
      }
    }
  }
}

TEST(StoreFile, AStartOnAFullDiskSaysSoAndIsMadeUpForLater) {
  auto& vfs = FaultVfs::instance();
  for (int n = 1; n < 60; ++n) {
    SCOPED_TRACE(n);
    TempFolder folder;
    test::LogLines log;
    vfs.fail(Fault::Full, n);
    Database db(folder.location(), log.sink());
    const bool struck = vfs.struck();
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
    EXPECT_LE(log.lines().size(), 1U) << log.lines().back();
    vfs.lift();
    db.look();
    EXPECT_FALSE(db.condition());
    EXPECT_NE(test::rowsOf(folder.location().file()).find("onboarded|'1'"), std::string::npos);
    if (!struck) break;
  }
}

TEST(StoreFile, WhatIsWrongStaysUntilItIsMended) {
  test::TempStore store;
  auto& vfs = FaultVfs::instance();
  vfs.fail(Fault::Full);
  EXPECT_FALSE(store.db.setSetting("paused", "1"));
  for (int i = 0; i < 3; ++i) {
    store.db.look();
    OtherProgram other(store.db.location().file());
    other.ask("BEGIN IMMEDIATE");
    store.db.look();
    ASSERT_TRUE(store.db.condition());
    EXPECT_EQ(store.db.condition()->trouble, StoreTrouble::Full);
  }
  EXPECT_EQ(store.log.lines().size(), 1U);
  vfs.lift();
  store.db.look();
  EXPECT_FALSE(store.db.condition());
}

// SQLite may end the whole transaction by itself when a part of it fails.
TEST(StoreFile, WhatFailsWithinATransactionEndsIt) {
  TempFolder folder;
  test::LogLines log;
  Database db(folder.location(), log.sink());
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

}  // namespace
}  // namespace orvanta
