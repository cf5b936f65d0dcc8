// Files that are no store: told once, left alone, lived without.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <sstream>

#include "storage/database.h"
#include "storage/overlap.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
using test::LogLines;
using test::TempFolder;
using test::TempStore;
using test::TestDatabase;

std::string contentOf(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

void expectUsableWithoutData(TestDatabase& db) {
  EXPECT_EQ(db.run("INSERT INTO projects(name) VALUES ('A')"), -1);
  EXPECT_FALSE(db.exec("DELETE FROM events"));
  EXPECT_EQ(db.setting("idle_threshold"), "180");
  db.setSetting("paused", "1");
}

TEST(BrokenStore, AFileThatIsNoDatabaseIsLeftAsItIs) {
  TempFolder folder;
  const auto where = folder.location();
  fs::create_directories(where.dir);
  const std::string content(5000, 'x');
  std::ofstream(where.file()) << content;
  LogLines log;
  {
    TestDatabase db(where, log.sink());
    expectUsableWithoutData(db);
    EXPECT_TRUE(db.query("SELECT * FROM events").empty());
  }
  EXPECT_EQ(contentOf(where.file()), content);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"Orvanta: impossible d'ouvrir la base " +
                                                  where.file().string()});
}

TEST(BrokenStore, AFolderThatCannotBeMadeIsToldOnce) {
  TempFolder folder;
  std::ofstream(folder.path() / "file") << "";
  LogLines log;
  TestDatabase db(DataLocation::under(folder.path() / "file"), log.sink());
  expectUsableWithoutData(db);
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST(BrokenStore, AFullDiskIsToldOnceUntilItHasRoomAgain) {
  TempStore store;
  // SQLite reports a file at its page limit exactly like a full disk.
  store.db.exec("PRAGMA max_page_count=1");
  const std::string large(100000, 'x');
  const auto write = [&] { return store.db.run("INSERT INTO projects(name) VALUES (?)", {large}); };
  for (int i = 0; i < 5; ++i) EXPECT_EQ(write(), -1);
  EXPECT_EQ(store.log.lines().size(), 1U);
  EXPECT_NE(store.log.lines().front().find("full"), std::string::npos);
  store.db.exec("PRAGMA max_page_count=1000000");
  EXPECT_EQ(write(), 1);
  store.db.exec("PRAGMA max_page_count=1");
  EXPECT_EQ(store.db.run("INSERT INTO projects(name) VALUES (?)", {large + "y"}), -1);
  EXPECT_EQ(store.log.lines().size(), 2U);
}

TEST(BrokenStore, DamageInTheMiddleOfAReportIsToldOnce) {
  TempFolder folder;
  const auto where = folder.location();
  {
    TestDatabase db(where, LogLines().sink());
    db.run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 9000) "
        "INSERT INTO events(start,end,app) SELECT i, i + 1, 'Éditeur' FROM n");
  }
  const auto size = fs::file_size(where.file());
  std::fstream file(where.file(), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(size / 4 * 3));
  file << std::string(16384, '\xff');
  file.close();
  LogLines log;
  TestDatabase db(where, log.sink());
  int spans = 0;
  for (int report = 0; report < 2; ++report) {
    db.scan("SELECT * FROM events", {}, [&](const Cursor&) { ++spans; });
  }
  EXPECT_GT(spans, 0);
  EXPECT_LT(spans, 2 * 9000);
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_NE(log.lines().front().find("malformed — SELECT * FROM events"), std::string::npos);
}

// As a user who may not write, since root may write anywhere.
int inUnprivilegedChild(const std::function<bool()>& check) {
  const pid_t child = fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    if (getuid() == 0 && setuid(kNobody) != 0) _exit(2);
    _exit(check() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(BrokenStore, AReadOnlyFileIsToldOnceAndStillRead) {
  TempFolder folder;
  const auto where = folder.location();
  { TestDatabase(where, LogLines().sink()).setSetting("min_span_seconds", "77"); }
  chmod(folder.path().c_str(), 0755);
  chmod(where.dir.c_str(), 0555);
  chmod(where.file().c_str(), 0444);
  const auto before = contentOf(where.file());
  const int status = inUnprivilegedChild([&] {
    LogLines log;
    TestDatabase db(where, log.sink());
    db.setSetting("idle_threshold", "78");
    db.setSetting("idle_threshold", "79");
    // What was set holds, though it cannot be stored.
    return log.lines().size() == 1 && db.setting("idle_threshold") == "79" &&
           db.setting("min_span_seconds") == "77" &&
           db.condition()->trouble == StoreTrouble::ReadOnly;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(where.file()), before);
  chmod(where.dir.c_str(), 0700);
}

TEST(BrokenStore, AnOldReadOnlyFileIsReadWithoutTheIndexThatItLacks) {
  TempFolder folder;
  const auto where = folder.location();
  {
    TestDatabase db(where, LogLines().sink());
    db.exec("INSERT INTO events(start, end, app) VALUES (0, 50000, 'A'), (40000, 40010, 'B')");
    db.exec("DROP INDEX idx_events_long; PRAGMA journal_mode=DELETE");
  }
  chmod(folder.path().c_str(), 0755);
  chmod(where.dir.c_str(), 0555);
  chmod(where.file().c_str(), 0444);
  const int status = inUnprivilegedChild([&] {
    LogLines log;
    TestDatabase db(where, log.sink());
    const OverlapQuery query("app");
    std::string apps;
    for (const auto& sql : {query.longBefore, query.fromShortlyBefore}) {
      const auto take = [&](const Cursor& row) { apps += *row.str(0); };
      db.scan(sql, OverlapQuery::args({40000, 41000}), take);
      db.each(sql, OverlapQuery::args({40000, 41000}), take);
    }
    return log.lines().size() == 1 && apps == "AABB";
  });
  EXPECT_EQ(status, 0);
  chmod(where.dir.c_str(), 0700);
}

}  // namespace
}  // namespace orvanta
