#include "storage/backups.h"

#include <atomic>
#include <thread>

#include "storage/backup_names.h"
#include "storage/store_check.h"
#include "support/children.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

constexpr double kNoon = 1'795'345'200;  // 22 November 2026, 12:00 in Paris
constexpr double kHour = 3600;
constexpr double kDay = 86400;

struct BackupsTest : testing::Test {
  Backups::Surroundings surroundings() {
    return {.log = log_.sink(),
            .calendar = Calendar(Glib::TimeZone::create("Europe/Paris")),
            .freeSpace = [this](const fs::path&) { return free_; }};
  }
  // What comes after "orvanta-", the newest first.
  Texts names() const {
    Texts names;
    for (const auto& backup : backups_.list()) {
      const auto name = backup.file.stem().string();
      names.push_back(name.substr(name.find('-') + 1));
    }
    return names;
  }
  void place(double time, const std::string& content = "x") {
    fs::create_directories(dir_);
    const auto file = dir_ / backupName(time, 1, surroundings().calendar);
    std::ofstream(file) << content;
    setModifiedAt(file, time);
  }

  LogLines log_;
  std::optional<uint64_t> free_;
  TempFolder folder_;
  fs::path file_ = folder_.path() / "orvanta.db";
  fs::path dir_ = folder_.path() / "sauvegardes";
  FileConnection store_ = newStore(file_);
  Backups backups_{dir_, surroundings()};
};

TEST_F(BackupsTest, AreWholeCopiesThatOnlyTheUserMayRead) {
  fillStore(store_, 2000);
  const auto before = umask(0);
  const auto result = backups_.make(file_, kNoon);
  umask(before);
  ASSERT_TRUE(result.made) << result.error;
  EXPECT_EQ(namesIn(dir_), Texts{"orvanta-2026-11-22-1200.db"});
  const auto copy = dir_ / "orvanta-2026-11-22-1200.db";
  EXPECT_EQ(modeOf(dir_), 0700U);
  EXPECT_EQ(modeOf(copy), 0600U);
  EXPECT_EQ(result.bytes, fs::file_size(copy));
  for (const auto* table : {"events", "projects", "rules", "settings", "sqlite_master"}) {
    const auto sql = std::string("SELECT * FROM ") + table;
    EXPECT_EQ(rowsOf(copy, sql), rowsOf(store_, sql));
  }
  EXPECT_EQ(rowsOf(copy, "PRAGMA journal_mode"), Texts{"delete|"});
  ASSERT_EQ(backups_.list().size(), 1U);
  EXPECT_EQ(backups_.list().front().time, kNoon);
  // Another one of the same minute does not replace it.
  execute(store_, "DELETE FROM events");
  ASSERT_TRUE(backups_.make(file_, kNoon + 20).made);
  EXPECT_EQ(names(), (Texts{"2026-11-22-1200-2", "2026-11-22-1200"}));
}

TEST_F(BackupsTest, AreOfOneMomentAlthoughTheStoreIsWrittenAllTheTime) {
  fillStore(store_, 20'000);
  std::atomic<bool> over = false;
  std::atomic<int> written = 0;
  std::thread writer([&] {
    const auto other = FileConnection::writing(file_);
    // Either both rows or none of them.
    while (!over) {
      if (other.exec("BEGIN IMMEDIATE; INSERT INTO rules(field, pattern) VALUES ('app','p');"
                     "UPDATE events SET title = title || 'x' WHERE id % 1000 = 7;"
                     "INSERT INTO projects(name) SELECT 'p' || count(*) FROM rules; COMMIT") ==
          SQLITE_OK) {
        ++written;
      }
    }
  });
  while (written == 0) std::this_thread::yield();
  const int before = written;
  const auto result = backups_.make(file_, kNoon);
  const int during = written - before;
  over = true;
  writer.join();
  ASSERT_TRUE(result.made) << result.error;
  EXPECT_GT(during, 0);
  const auto copy = FileConnection::reading(backups_.list().front().file);
  EXPECT_EQ(copy.number("SELECT count(*) FROM rules"),
            copy.number("SELECT count(*) FROM projects"));
  EXPECT_GE(copy.number("SELECT count(*) FROM rules"), before);
}

TEST_F(BackupsTest, AreNotMadeOfWhatIsDamagedNorWithoutRoom) {
  fillStore(store_, 2000);
  ASSERT_TRUE(backups_.make(file_, kNoon).made);
  const auto good = namesIn(dir_);
  std::ofstream(dir_ / ".orvanta-2026-11-23-1200.db.partiel") << "left by a killed one";

  const auto size = fs::file_size(file_) + fs::file_size(walOf(file_));
  free_ = 2 * size - 1;
  const auto full = backups_.make(file_, kNoon + kDay);
  EXPECT_FALSE(full.made);
  EXPECT_TRUE(holds(full.error, "place"));
  free_ = 2 * size;
  std::stop_source stop;
  stop.request_stop();
  const auto stopped = backups_.make(file_, kNoon + kDay, stop.get_token());
  EXPECT_TRUE(!stopped.made && stopped.stopped && stopped.error.empty());

  execute(store_, "PRAGMA journal_mode=DELETE");
  overwrite(file_, fs::file_size(file_) / 2, std::string(2000, '\x55'));
  free_ = {};
  const auto damaged = backups_.make(file_, kNoon + kDay);
  EXPECT_FALSE(damaged.made);
  EXPECT_TRUE(holds(damaged.error, "abîmé"));
  EXPECT_FALSE(backups_.make(folder_.path() / "none.db", kNoon).made);
  EXPECT_EQ(namesIn(dir_), good);
  EXPECT_EQ(log_.lines().size(), 3U);
}

TEST_F(BackupsTest, AreListedNewestFirstWhateverElseIsThere) {
  fs::create_directories(dir_ / "orvanta-2026-11-20-0900.db");
  for (const auto* name :
       {"orvanta-2026-13-20-0900.db", "orvanta-2026-11-20-2500.db", "orvanta-2026-11-20-0900.db~",
        "notes.txt", ".orvanta-2026-11-20-0900.db.partiel", "orvanta-2026-02-30-0900.db",
        "orvanta-2026-11-20-0900-0.db", "orvanta-2026-11-21-0900.db",
        "orvanta-2026-11-21-0900-10.db", "orvanta-2026-11-21-0900-9.db",
        "orvanta-2026-03-29-0230.db", "orvanta-2025-12-31-2359.db"}) {
    if (!fs::exists(dir_ / name)) std::ofstream(dir_ / name) << "x";
  }
  fs::create_symlink(file_, dir_ / "orvanta-2026-11-25-0900.db");
  // Where the hour comes twice, the time of the file says which.
  for (const auto& [name, time] : {std::pair("orvanta-2026-10-25-0230.db", 1'792'888'200.0),
                                   {"orvanta-2026-10-25-0230-2.db", 1'792'891'800.0}}) {
    std::ofstream(dir_ / name) << "x";
    setModifiedAt(dir_ / name, time);
  }
  EXPECT_EQ(names(),
            (Texts{"2026-11-21-0900-10", "2026-11-21-0900-9", "2026-11-21-0900",
                   "2026-10-25-0230-2", "2026-10-25-0230", "2026-03-29-0230", "2025-12-31-2359"}));
  const auto list = backups_.list();
  EXPECT_EQ(list[0].time, kNoon - kDay - 3 * kHour);
  EXPECT_EQ(list[3].time, 1'792'891'800.0);
  EXPECT_EQ(list[4].time, 1'792'888'200.0);
}

TEST_F(BackupsTest, AreDueOnceADayOrOnceAWeek) {
  constexpr uint64_t kSmall = 100'000'000;
  EXPECT_TRUE(backups_.due(kNoon, kSmall));
  place(kNoon);
  struct Case {
    double later;
    uint64_t bytes;
    bool due;
  };
  for (const auto& [later, bytes, due] :
       {Case{0, kSmall, false}, Case{11.9 * kHour, kSmall, false}, Case{12 * kHour, kSmall, true},
        Case{12 * kHour, kSmall + 1, false}, Case{6 * kDay, kSmall + 1, false},
        Case{6.5 * kDay, kSmall + 1, true}, Case{-20 * kHour, kSmall, false},
        // A clock that was wrong for a while holds nothing up.
        Case{-3 * kDay, kSmall, true}}) {
    EXPECT_EQ(backups_.due(kNoon + later, bytes), due) << later << " " << bytes;
  }
}

TEST_F(BackupsTest, KeepThreeDaysAndFourWeeks) {
  fillStore(store_, 10);
  for (int day = 0; day < 60; ++day) {
    ASSERT_TRUE(backups_.make(file_, kNoon + day * kDay).made);
    backups_.prune(kNoon + day * kDay);
  }
  // The 20th of January 2027 is a Wednesday.
  const Texts kept{"2027-01-20-1200", "2027-01-19-1200", "2027-01-18-1200",
                   "2027-01-17-1200", "2027-01-10-1200", "2027-01-03-1200"};
  EXPECT_EQ(names(), kept);
  // After a long absence nothing is too old; a backup of a wrong clock takes nobody's place.
  place(kNoon + 4000 * kDay);
  ASSERT_TRUE(backups_.make(file_, kNoon + 300 * kDay).made);
  backups_.prune(kNoon + 300 * kDay);
  EXPECT_EQ(names(), (Texts{"2027-09-18-1300", "2027-01-20-1200", "2027-01-19-1200",
                            "2027-01-17-1200", "2027-01-10-1200"}));
}

TEST_F(BackupsTest, DropAnOlderOneOnlyForANewerThatIsWhole) {
  fillStore(store_, 10);
  for (int week = 1; week <= 6; ++week) {
    ASSERT_TRUE(backups_.make(file_, kNoon - week * 7 * kDay).made);
  }
  for (int day = 0; day < 3; ++day) place(kNoon + day * kDay, "damaged since");
  Backups afterAStart(dir_, surroundings());
  afterAStart.prune(kNoon + 3 * kDay);
  // Weeks: two of the damaged ones', then two whole ones; only what is older than these goes.
  EXPECT_EQ(names(), (Texts{"2026-11-24-1200", "2026-11-23-1200", "2026-11-22-1200",
                            "2026-11-15-1200", "2026-11-08-1200"}));
  for (const auto& backup : backups_.list()) {
    if (checkStore(backup.file).whole) fs::remove(backup.file);
  }
  for (int day = 3; day < 9; ++day) place(kNoon + day * kDay, "damaged since");
  const auto all = names();
  afterAStart.prune(kNoon + 9 * kDay);
  EXPECT_EQ(names(), all);
}

TEST_F(BackupsTest, HoldNothingOfWhatWasErased) {
  fillStore(store_, 3000);
  execute(store_, "PRAGMA secure_delete=ON; UPDATE events SET title=title||'plus' WHERE id%3=0");
  ASSERT_TRUE(backups_.make(file_, kNoon).made);
  execute(store_, "DELETE FROM events WHERE id > 2500");
  ASSERT_TRUE(backups_.make(file_, kNoon + kDay).made);
  std::ofstream(dir_ / ".orvanta-2026-11-24-1200.db.partiel") << "Titre-1500.";
  ASSERT_FALSE(filesHolding(dir_, "Titre-1500.").empty());

  const auto erasure = eraseRange({1'010'000, 1'020'000});
  const auto result = backups_.apply(erasure);
  EXPECT_EQ(result.rewritten, 2);
  EXPECT_TRUE(result.removed == 0 && result.left.empty());
  EXPECT_EQ(namesIn(dir_), (Texts{"orvanta-2026-11-22-1200.db", "orvanta-2026-11-23-1200.db"}));
  for (int i = 1000; i < 1999; ++i) {
    EXPECT_TRUE(filesHolding(dir_, fmt::format("Titre-{}.", i)).empty()) << i;
  }
  const auto list = backups_.list();
  EXPECT_EQ(list.front().time, kNoon + kDay);
  for (const auto& backup : list) {
    EXPECT_TRUE(checkStore(backup.file, {.full = true}).whole);
    EXPECT_EQ(modeOf(backup.file), 0600U);
  }
  // Spans that are cut keep their titles in the part that is left.
  EXPECT_EQ(
      rowsOf(list.front().file, "SELECT id, start, end, title FROM events WHERE id IN (999,1999)"),
      (Texts{"999|1009990.25|1010000|Titre-999.plus|", "1999|1020000|1020000.25|Titre-1999.|"}));
  EXPECT_EQ(rowsOf(list.front().file, "SELECT count(*) FROM events"), Texts{"1501|"});
}

TEST_F(BackupsTest, AreRemovedRatherThanLeftWithWhatWasErased) {
  fillStore(store_, 100);
  ASSERT_TRUE(backups_.make(file_, kNoon).made);
  ASSERT_TRUE(backups_.make(file_, kNoon + kDay).made);
  overwrite(dir_ / "orvanta-2026-11-22-1200.db", 0, "not any more");
  const auto result = backups_.apply(stripTitlesBefore(2e9));
  EXPECT_EQ(result.rewritten, 1);
  EXPECT_EQ(result.removed, 1);
  EXPECT_EQ(names(), Texts{"2026-11-23-1200"});
  EXPECT_TRUE(filesHolding(dir_, "Titre-").empty());
  EXPECT_EQ(log_.lines(), Texts{"Orvanta: sauvegarde orvanta-2026-11-22-1200.db retirée : ce "
                                "qui a été effacé n’a pas pu y être effacé"});
}

TEST_F(BackupsTest, ThatCanNeitherBeRewrittenNorRemovedAreTold) {
  fillStore(store_, 100);
  ASSERT_TRUE(backups_.make(file_, kNoon).made);
  chmod(folder_.path().c_str(), 0755);
  chmod(dir_.c_str(), 0555);
  chmod((dir_ / "orvanta-2026-11-22-1200.db").c_str(), 0444);
  EXPECT_TRUE(isSoForNobody([&] {
    const auto result = backups_.apply(stripTitlesBefore(2e9));
    return result.left.size() == 1 && result.removed == 0 && result.rewritten == 0;
  }));
  EXPECT_TRUE(checkStore(dir_ / "orvanta-2026-11-22-1200.db").whole);
  chmod(dir_.c_str(), 0700);
}

}  // namespace
}  // namespace orvanta::test
