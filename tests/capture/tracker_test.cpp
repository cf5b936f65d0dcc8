#include "capture/tracker.h"

#include <future>
#include <thread>

#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

struct TrackerTest : testing::Test {
  TempStore store;
  FakeDesktop desktop;
};

TEST_F(TrackerTest, RecordsByItsOwnTimerAndClosesAtTheEnd) {
  desktop.show("A", "titre");
  Tracker tracker(store.db, desktop.collectors);
  EXPECT_FALSE(tracker.current());
  const double before = wallClock();
  tracker.start();
  while (!tracker.current()) std::this_thread::yield();
  EXPECT_GE(wallClock() - before, 1.0);
  EXPECT_EQ(tracker.current()->sample.title, "titre");
  EXPECT_LT(tracker.current()->elapsed, 1.0);
  tracker.shutdown();
  EXPECT_FALSE(tracker.current());
  std::this_thread::sleep_for(std::chrono::milliseconds(2100));  // a tick's time
  EXPECT_FALSE(tracker.current());
  EXPECT_EQ(store.log.lines().back(),
            "Orvanta: capture démarrée (" + store.db.location().file().string() + ")");
}

TEST_F(TrackerTest, PausesAndSleepsInTheOrderAsked) {
  {
    Tracker tracker(store.db, desktop.collectors);
    EXPECT_FALSE(tracker.paused());
    tracker.setPaused(true).forget();
    tracker.shutdown();
    EXPECT_TRUE(tracker.paused());
    std::promise<void> asleep;
    tracker.willSleep([&] { asleep.set_value(); });
    asleep.get_future().wait();
  }
  EXPECT_TRUE(Tracker(store.db, desktop.collectors).paused());
}

// What menu and dashboard do while the capture runs, for the thread sanitizer to look at.
TEST_F(TrackerTest, IsReadAndSteeredFromOtherThreads) {
  desktop.show("A");
  Tracker tracker(store.db, desktop.collectors);
  tracker.start();
  std::vector<std::future<void>> others;
  for (int thread = 0; thread < 3; ++thread) {
    others.push_back(std::async(std::launch::async, [&] {
      const double end = wallClock() + 2;
      for (int64_t i = 0; wallClock() < end; ++i) {
        tracker.setCurrentProjectId(i);
        tracker.setLocked(i % 7 == 0);
        tracker.setPaused(i % 5 == 0).forget();
        (void)tracker.current();
        (void)tracker.paused();
        (void)tracker.currentProjectId();
        tracker.applyRetention();
      }
    }));
  }
  others.clear();
  tracker.setPaused(false).forget();
  tracker.shutdown();
  EXPECT_FALSE(tracker.paused());
  EXPECT_TRUE(tracker.currentProjectSince());
}

TEST_F(TrackerTest, RetentionBlanksOldTitlesAndKeepsTheTime) {
  FakeClock clock;
  Tracker tracker(store.db, desktop.collectors, clock.read());
  const auto addSpan = [&](double daysAgo) {
    const double end = clock.now - daysAgo * 86400;
    store.db.run("INSERT INTO events(start,end,app,title,url,domain) VALUES (?,?,'A','t','u','d')",
                 {end - 60, end});
  };
  const auto titles = [&] {
    return store.db.query("SELECT 1 FROM events WHERE title NOT NULL AND url NOT NULL").size();
  };
  store.db.run("INSERT INTO events(start,end,app) VALUES (0,?,'A')", {clock.now.load()});
  addSpan(29.9);
  addSpan(30.1);
  for (const auto* off : {"0", "-3", "", "30.5", "trente", "99999999999999999999"}) {
    store.db.setSetting("retention_days", off);
    tracker.applyRetention();
    EXPECT_EQ(titles(), 2U) << off;
  }
  store.db.setSetting("retention_days", "30");
  tracker.applyRetention();
  EXPECT_EQ(titles(), 1U);
  // Spans of long ago that come late are found as well.
  store.db.run(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 9000) "
      "INSERT INTO events(start,end,app,title,url) SELECT 0, max(i, 4500), 'B', 't', 'u' FROM n");
  tracker.applyRetention();
  EXPECT_EQ(titles(), 1U);
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE app='A' AND domain='d'").size(), 2U);
}

TEST_F(TrackerTest, RetentionIsNotWaitedFor) {
  const auto titles = [&] {
    return store.db.query("SELECT 1 FROM events WHERE title NOT NULL OR url NOT NULL").size();
  };
  store.db.run(
      "WITH RECURSIVE n(i) AS (SELECT -9000 UNION ALL SELECT i + 1 FROM n WHERE i < 9000) "
      "INSERT INTO events(id,start,end,app,title,url) SELECT i * 1000000007, 0, 10, 'B', 't', 'u' "
      "FROM n");
  store.db.setSetting("retention_days", "1");
  Tracker tracker(store.db, desktop.collectors);
  std::promise<void> answered;
  std::promise<void> held;
  std::thread other([&] {  // as if the first step took very long
    store.db.each("SELECT 1", {}, [&](const Cursor&) {
      held.set_value();
      answered.get_future().wait_for(std::chrono::seconds(5));
    });
  });
  held.get_future().wait();
  const double before = wallClock();
  tracker.startRetention();
  EXPECT_LT(wallClock() - before, 2);
  answered.set_value();
  other.join();
  for (const double end = wallClock() + 10; titles() > 0 && wallClock() < end;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(titles(), 0U);
}

}  // namespace
}  // namespace orvanta::test
