#include "storage/restore.h"

#include "storage/kept_stores.h"
#include "storage/repair.h"
#include "storage/store_copy.h"
#include "support/children.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

constexpr double kNoon = 1'795'345'200;  // 22 November 2026, 12:00 in Paris
constexpr auto kStamp = "2026-11-22-1200";

struct RestoreTest : testing::Test {
  RestoreTest() {
    fillStore(newStore(store_), 100);
    EXPECT_TRUE(copyStore(store_, backup_).made);
    FileConnection today = FileConnection::writing(store_);
    fillStore(today, 50, 2'000'000);
    execute(today, "PRAGMA journal_mode=WAL");
    fillStore(today, 50, 3'000'000);
    // As a kill leaves it: the last spans are in the log.
    fs::copy(store_, folder_.path() / "c");
    fs::copy(walOf(store_), folder_.path() / "c-wal");
    today = {};
    fs::rename(folder_.path() / "c", store_);
    fs::rename(folder_.path() / "c-wal", walOf(store_));
  }
  RestoreOptions options() const {
    return {.now = kNoon, .calendar = Calendar(Glib::TimeZone::create("Europe/Paris"))};
  }
  // Restores the folder as it was at the first call, then does this in a child that ends abruptly
  // at the given call of the hook. False when it came to the end.
  bool killedAt(int step, const std::function<void(const std::function<void()>& hook)>& work) {
    if (!fs::exists(atStart_)) fs::copy(where_.dir, atStart_, fs::copy_options::recursive);
    fs::remove_all(where_.dir);
    fs::copy(atStart_, where_.dir, fs::copy_options::recursive);
    const int end = endOfChild([&] {
      int steps = 0;
      work([&] {
        if (++steps == step) _exit(9);
      });
    });
    return WEXITSTATUS(end) == 9;
  }
  static int64_t spansIn(const fs::path& file) {
    return FileConnection::reading(file).number("SELECT count(*) FROM events");
  }
  fs::path kept(const std::string& more = "") const {
    return store_.string() + ".avant-restauration-" + kStamp + more;
  }

  TempFolder folder_;
  DataLocation where_ = folder_.location();
  fs::path store_ = where_.file();
  fs::path backup_ = folder_.path() / "backup.db";
  fs::path atStart_ = folder_.path() / "at start";
};

TEST_F(RestoreTest, PutsTheBackupInPlaceAndKeepsWhatWasThere) {
  const auto result = restoreStore(where_, backup_, options());
  ASSERT_TRUE(result.done) << result.error;
  EXPECT_EQ(result.kept, kept());
  EXPECT_EQ(spansIn(store_), 100);
  EXPECT_EQ(spansIn(kept()), 200);
  EXPECT_EQ(namesIn(where_.dir),
            (Texts{"orvanta.db", kept().filename().string(), kept("-wal").filename().string()}));
  // And back again, in the same minute.
  const auto back = restoreStore(where_, kept(), options());
  ASSERT_TRUE(back.done) << back.error;
  EXPECT_EQ(back.kept, kept("-2"));
  EXPECT_EQ(spansIn(store_), 200);
  EXPECT_EQ(spansIn(kept("-2")), 100);
  EXPECT_EQ(modeOf(store_), 0600U);
}

TEST_F(RestoreTest, ChangesNothingWhenItCannotBeDone) {
  const auto names = namesIn(where_.dir);
  std::ofstream(folder_.path() / "text.db") << "not a store";
  fs::copy(backup_, folder_.path() / "damaged.db");
  overwrite(folder_.path() / "damaged.db", 4096, std::string(2048, '\x33'));
  for (const auto& file : {folder_.path() / "none.db", folder_.path() / "text.db",
                           folder_.path() / "damaged.db", folder_.path(), store_}) {
    const auto result = restoreStore(where_, file, options());
    EXPECT_FALSE(result.done || result.error.empty()) << file;
  }
  auto full = options();
  full.freeSpace = [](const fs::path&) { return 1000; };
  EXPECT_TRUE(holds(restoreStore(where_, backup_, full).error, "place"));
  std::stop_source stop;
  stop.request_stop();
  auto stopped = options();
  stopped.stop = stop.get_token();
  EXPECT_EQ(restoreStore(where_, backup_, stopped).error, "interrompu");
  EXPECT_EQ(spansIn(store_), 200);
  EXPECT_EQ(namesIn(where_.dir), names);
}

TEST_F(RestoreTest, ADamagedStoreIsReplacedByWhatCanBeSaved) {
  constexpr std::size_t kPage = 1024;
  const auto page = bytesIn(store_).find("Titre-50.") / kPage * kPage;
  overwrite(store_, page, std::string(kPage, '\x5a'));
  fs::create_directory(where_.dir / "orvanta.db.récupération.copie-abcdef");
  std::ofstream(where_.dir / "orvanta.db.récupération") << "left by a killed one";
  const SalvageOptions how{
      .prepareSchema = createSchema, .newestBackup = backup_, .calendar = options().calendar};
  for (int step = 1;; ++step) {
    const bool killed =
        killedAt(step, [&](const auto& hook) { (void)repairStore(store_, how, kNoon, hook); });
    ASSERT_TRUE(finishSwap(store_));
    const auto aside = store_.string() + ".endommagé-" + kStamp;
    EXPECT_EQ(checkStore(store_).whole, fs::exists(aside)) << "killed at " << step;
    if (!fs::exists(aside)) {
      const auto again = repairStore(store_, how, kNoon);
      ASSERT_TRUE(again.done) << again.report.sentence;
      EXPECT_TRUE(again.kept.has_value());
    }
    EXPECT_EQ(spansIn(store_), 200) << "killed at " << step;
    EXPECT_TRUE(bytesIn(aside) == bytesIn(atStart_ / "orvanta.db"));
    EXPECT_TRUE(bytesIn(walOf(aside)) == bytesIn(atStart_ / "orvanta.db-wal"));
    EXPECT_EQ(namesIn(where_.dir).size(), 3U) << "killed at " << step;
    if (!killed) break;
  }
}

TEST_F(RestoreTest, KilledAtAnyStepLosesNeither) {
  int steps = 0;
  for (bool killed = true; killed; ++steps) {
    killed = killedAt(steps + 1, [&](const auto& hook) {
      auto hooked = options();
      hooked.afterStep = hook;
      (void)restoreStore(where_, backup_, hooked);
    });
    for (int start = 0; start < 2; ++start) {
      prepare(where_, LogLines().sink());
      ASSERT_TRUE(finishSwap(store_));
    }
    EXPECT_FALSE(fs::exists(kept("-2"))) << "killed at " << steps;
    const bool swapped = fs::exists(kept());
    EXPECT_EQ(spansIn(store_), swapped ? 100 : 200) << "killed at " << steps;
    EXPECT_TRUE(!swapped || spansIn(kept()) == 200) << "killed at " << steps;
    EXPECT_FALSE(fs::exists(walOf(store_)) && swapped);
    EXPECT_TRUE(swapped || steps < 2);
    // A later one cleans up.
    ASSERT_TRUE(restoreStore(where_, backup_, options()).done);
    for (const auto& name : namesIn(where_.dir)) {
      EXPECT_TRUE(name == "orvanta.db" || name.find("avant-restauration") != std::string::npos)
          << name;
    }
  }
  EXPECT_GE(steps, 5);
}

TEST_F(RestoreTest, PutAsideTheStoreStaysWithItsLog) {
  const auto aside = store_.string() + ".endommagé-" + kStamp;
  for (int step = 1;; ++step) {
    const bool killed = killedAt(step, [&](const auto& hook) {
      (void)keepAside(
          store_,
          {.why = "endommagé", .now = kNoon, .calendar = options().calendar, .afterStep = hook});
    });
    ASSERT_TRUE(finishSwap(store_));
    EXPECT_EQ(spansIn(aside), 200) << "killed at " << step;
    EXPECT_EQ(namesIn(where_.dir).size(), 2U) << "killed at " << step;
    if (!killed) break;
  }
  // What somebody has made meanwhile under the name is not overwritten.
  std::ofstream(aside + "-2") << "x";
  std::ofstream(store_) << "y";
  const auto second =
      keepAside(store_, {.why = "endommagé", .now = kNoon, .calendar = options().calendar});
  EXPECT_TRUE(second.done);
  EXPECT_EQ(second.kept, aside + "-3");
  EXPECT_EQ(spansIn(aside), 200);
  // Nothing there: nothing to keep.
  const auto none =
      keepAside(store_, {.why = "endommagé", .now = kNoon, .calendar = options().calendar});
  EXPECT_TRUE(none.done && !none.kept);
  EXPECT_FALSE(replaceStore(store_, folder_.path() / "none.db", {.why = "x", .now = kNoon}).done);
}

TEST_F(RestoreTest, ShowsBeforeWhatItWouldChange) {
  const auto before = namesIn(where_.dir);
  const auto preview = restorePreview(where_, backup_);
  EXPECT_EQ(preview.now.spans, 200);
  EXPECT_EQ(preview.backup.facts.spans, 100);
  ASSERT_TRUE(preview.lost && preview.regained);
  // Of a hundred spans five are absences.
  EXPECT_EQ(preview.lost->spans, 96);
  EXPECT_EQ(preview.lost->seconds, 960);
  EXPECT_EQ(preview.regained->spans, 0);
  EXPECT_EQ(namesIn(where_.dir), before);

  execute(FileConnection::writing(store_),
          "DELETE FROM events WHERE id = 1; UPDATE events SET end = start + 4 WHERE id = 2");
  const auto changed = restorePreview(where_, backup_);
  ASSERT_TRUE(changed.regained);
  EXPECT_EQ(changed.regained->spans, 2);
  EXPECT_EQ(changed.regained->seconds, 16);
  EXPECT_FALSE(restorePreview(where_, folder_.path() / "none.db").lost);
}

TEST_F(RestoreTest, WhatIsErasedIsErasedFromTheKeptFilesToo) {
  ASSERT_TRUE(restoreStore(where_, backup_, options()).done);
  std::ofstream(store_.string() + ".endommagé-2026-11-20-0800") << "Titre-77. in a damaged file";
  ASSERT_EQ(keptStores(where_).size(), 2U);
  LogLines log;
  const auto erasure = eraseRange({1'000'000, 1'000'800});
  execute(FileConnection::writing(store_), "DELETE FROM events WHERE end <= 1000800");
  ASSERT_GE(filesHolding(where_.dir, "Titre-77.").size(), 2U);
  EXPECT_TRUE(eraseFromKeptStores(where_, erasure, log.sink()).empty());
  EXPECT_EQ(spansIn(kept()), 122);
  EXPECT_EQ(filesHolding(where_.dir, "Titre-77.").size(), 1U);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_TRUE(removeDamagedStores(where_, log.sink()).empty());
  EXPECT_TRUE(filesHolding(where_.dir, "Titre-77.").empty());
  EXPECT_EQ(keptStores(where_), std::vector<fs::path>{kept()});
  EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace
}  // namespace orvanta::test
