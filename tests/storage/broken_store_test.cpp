// Files that are no store: told once, left alone, lived without.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <sstream>

#include "storage/database.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
using test::LogLines;
using test::TempFolder;
using test::TempStore;

std::string contentOf(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

void expectUsableWithoutData(Database& db) {
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
    Database db(where, log.sink());
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
  Database db(DataLocation::under(folder.path() / "file"), log.sink());
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
  { Database(where, LogLines().sink()).setSetting("idle_threshold", "77"); }
  chmod(folder.path().c_str(), 0755);
  chmod(where.dir.c_str(), 0555);
  chmod(where.file().c_str(), 0444);
  const auto before = contentOf(where.file());
  const int status = inUnprivilegedChild([&] {
    LogLines log;
    Database db(where, log.sink());
    db.setSetting("idle_threshold", "78");
    db.setSetting("idle_threshold", "79");
    // Where the folder is read-only too, a store in WAL mode cannot be opened at all.
    const auto read = db.setting("idle_threshold");
    return log.lines().size() == 1 && (read == "77" || read == "180");
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(where.file()), before);
  chmod(where.dir.c_str(), 0700);
}

}  // namespace
}  // namespace orvanta
