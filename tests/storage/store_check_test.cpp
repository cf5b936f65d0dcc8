#include "storage/store_check.h"

#include "support/children.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

struct StoreCheck : testing::Test {
  TempFolder folder;
  fs::path file = folder.path() / "s.db";
};

TEST_F(StoreCheck, TellsWhatAWholeStoreHolds) {
  const auto store = newStore(file);
  const auto empty = checkStore(file);
  EXPECT_TRUE(empty.whole);
  EXPECT_FALSE(empty.facts.first || empty.facts.last);
  fillStore(store, 500);
  // A wrong clock or damage may leave times that are none.
  execute(store, "INSERT INTO events(start, end) VALUES (-5, 9e999)");
  // In use, and most of it in the log still.
  for (const bool full : {false, true}) {
    const auto check = checkStore(file, {.full = full});
    EXPECT_TRUE(check.finished && check.whole && check.problems.empty());
    EXPECT_EQ(check.facts.spans, 501);
    EXPECT_EQ(check.facts.first, 1'000'010.25);
    EXPECT_EQ(check.facts.last, 1'005'010.25);
    EXPECT_EQ(check.facts.projects, 2);
    EXPECT_EQ(check.facts.rules, 2);
    EXPECT_EQ(check.facts.bytes, fs::file_size(file) + fs::file_size(walOf(file)));
  }
}

TEST_F(StoreCheck, TellsWhatIsWrong) {
  fillStore(newStore(file), 3000);
  const auto size = fs::file_size(file);
  fs::copy(file, folder.path() / "damaged.db");
  overwrite(folder.path() / "damaged.db", size / 2, std::string(3000, '\x7f'));
  fs::copy(file, folder.path() / "cut.db");
  fs::resize_file(folder.path() / "cut.db", size / 3);
  std::ofstream(folder.path() / "text.db") << std::string(5000, 'x');
  std::ofstream(folder.path() / "empty.db") << "";
  fs::create_directory(folder.path() / "folder.db");
  for (const auto& [name, problem] : {std::pair("damaged.db", "abîmé"),
                                      {"cut.db", "abîmé"},
                                      {"none.db", "n’existe pas"},
                                      {"text.db", "pas une base"},
                                      {"empty.db", "la table « events » manque"},
                                      {"folder.db", "pas un fichier"}}) {
    const auto check = checkStore(folder.path() / name);
    EXPECT_TRUE(check.finished) << name;
    EXPECT_FALSE(check.whole) << name;
    ASSERT_FALSE(check.problems.empty()) << name;
    EXPECT_TRUE(holds(check.problems.front(), problem));
    EXPECT_LE(check.problems.size(), 60U);
  }
}

TEST_F(StoreCheck, ComparesIndexesOnlyWhenAsked) {
  {
    const auto store = newStore(file);
    fillStore(store, 100);
    sqlite3_db_config(store.get(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    // The index on starts becomes one on ends.
    execute(store,
            "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql='CREATE INDEX "
            "idx_events_start ON events(end)' WHERE name='idx_events_start'");
  }
  EXPECT_TRUE(checkStore(file).whole);
  const auto check = checkStore(file, {.full = true});
  EXPECT_FALSE(check.whole);
  EXPECT_TRUE(holds(check.problems.front(), "un index ne correspond pas"));
}

TEST_F(StoreCheck, ChangesNothingAndLeavesNothing) {
  const auto killed = folder.path() / "killed" / "s.db";
  {
    const auto store = newStore(file);
    fillStore(store, 200);
    // As a kill leaves it, once with the index of the log and once without.
    for (const auto& copy : {killed, folder.path() / "killed2" / "s.db"}) {
      fs::create_directories(copy.parent_path());
      fs::copy(file, copy);
      fs::copy(walOf(file), walOf(copy));
    }
    fs::copy(shmOf(file), shmOf(folder.path() / "killed2" / "s.db"));
  }
  for (const auto& one : {file, killed, folder.path() / "killed2" / "s.db"}) {
    const auto names = namesIn(one.parent_path());
    const auto bytes = bytesIn(one) + bytesIn(walOf(one));
    const auto check = checkStore(one, {.full = true});
    EXPECT_TRUE(check.whole) << one;
    EXPECT_EQ(check.facts.spans, 200) << one;
    EXPECT_EQ(namesIn(one.parent_path()), names);
    EXPECT_EQ(bytesIn(one) + bytesIn(walOf(one)), bytes);
  }
}

TEST_F(StoreCheck, ReadsWhereNothingMayBeWritten) {
  fillStore(newStore(file), 200);
  chmod(file.c_str(), 0444);
  chmod(folder.path().c_str(), 0555);
  EXPECT_TRUE(isSoForNobody([&] {
    const auto check = checkStore(file);
    return check.whole && check.facts.spans == 200;
  }));
  chmod(folder.path().c_str(), 0700);
}

TEST_F(StoreCheck, EndsWhenItIsToldTo) {
  fillStore(newStore(file), 200'000);
  std::stop_source stop;
  stop.request_stop();
  for (const auto& options : {CheckOptions{.stop = stop.get_token()},
                              CheckOptions{.budget = std::chrono::milliseconds(1)}}) {
    const auto check = checkStore(file, options);
    EXPECT_FALSE(check.finished || check.whole);
    EXPECT_TRUE(check.problems.empty());
  }
  EXPECT_TRUE(checkStore(file, {.budget = std::chrono::minutes(1)}).whole);
}

}  // namespace
}  // namespace orvanta::test
