// The capture while its store cannot be written, is not there, or is another.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <chrono>
#include <memory>
#include <set>

#include "capture/span_log.h"
#include "capture/trusted_time.h"
#include "classify/assign_range.h"
#include "support/children.h"
#include "support/fault_vfs.h"
#include "support/random_store.h"
#include "support/recording.h"
#include "support/store_rows.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr auto kLate = kInstrumented ? 500ms : 50ms;

// Recorded spans without their ids, by start.
std::string spansIn(const fs::path& file) {
  return OtherProgram(file).ask(
      "SELECT quote(start), quote(end), app, bundle, title, url, domain, idle FROM events "
      "ORDER BY start, end");
}

struct Capture : Recording {
  explicit Capture(const char* journal = "WAL") {
    store.db.query(std::string("PRAGMA journal_mode=") + journal);
  }
  void tick(double seconds = 2) {
    const auto begin = SteadyClock::now();
    Recording::tick(seconds);
    slowest = std::max(slowest, SteadyClock::now() - begin);
  }
  fs::path file() const { return store.db.location().file(); }
  std::string spans() const { return spansIn(file()); }

  SteadyClock::duration slowest = {};
};

// Four minutes of everything: other applications, titles, glances, a coffee and a nap.
void act(Capture& capture, int step) {
  auto& [store, desktop, clock, live, engine] = static_cast<Recording&>(capture);
  engine.setLocked(step >= 60 && step < 66);
  if (step % 5 == 0) {
    desktop.browse(fmt::format("https://site{}.fr/{}", step / 20, step), fmt::format("P {}", step));
  }
  if (step % 20 == 10) desktop.show("Éditeur", fmt::format("Fichier {}", step));
  if (step % 20 == 16) desktop.show("Coup d'œil");
  if (step == 80) clock.sleep(600);
  capture.tick();
}

constexpr int kSteps = 120;
constexpr int kTroubleFrom = 20;
constexpr int kTroubleTo = 100;

struct Trouble {
  std::function<void(Capture&)> begin;
  std::function<void(Capture&)> end;
};

// The slowest tick of a run that is in trouble for a while.
SteadyClock::duration run(const Trouble& trouble, const std::string& expected,
                          const char* journal) {
  Capture capture(journal);
  for (int step = 0; step < kSteps; ++step) {
    if (step == kTroubleFrom) trouble.begin(capture);
    if (step == kTroubleTo) trouble.end(capture);
    act(capture, step);
  }
  capture.engine.finish();
  EXPECT_EQ(difference(expected, capture.spans()), "");
  EXPECT_EQ(integrityOf(capture.file()), "ok|\n");
  EXPECT_EQ(capture.live.waiting(), 0U);
  EXPECT_FALSE(capture.store.db.condition());
  EXPECT_LE(capture.store.log.lines().size(), 3U)
      << fmt::format("{}", fmt::join(capture.store.log.lines(), "\n"));
  return capture.slowest;
}

std::string withoutTrouble(int steps) {
  Capture capture;
  for (int step = 0; step < steps; ++step) act(capture, step);
  capture.engine.finish();
  return capture.spans();
}

TEST(StoreTrouble, NothingRecordedMeanwhileIsMissingAndNoTickComesLate) {
  const auto expected = withoutTrouble(kSteps);
  std::vector<Trouble> troubles;
  for (const auto fault : {Fault::Full, Fault::WriteError, Fault::ReadOnly, Fault::ReadError}) {
    for (int n = 1; n < 200; n += fault == Fault::Full ? 1 : 7) {
      troubles.push_back(
          {[=](Capture&) { FaultVfs::fail(fault, n); }, [](Capture&) { FaultVfs::lift(); }});
    }
  }
  auto other = std::make_shared<std::optional<OtherProgram>>();
  for (const auto* lock : {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE", "BEGIN; SELECT * FROM events"}) {
    troubles.push_back({[=](Capture& capture) { other->emplace(capture.file()).ask(lock); },
                        [=](Capture&) { other->reset(); }});
  }
  auto slowest = SteadyClock::duration(0);
  for (const auto* journal : {"WAL", "DELETE"}) {
    for (std::size_t i = 0; i < troubles.size(); i += journal[0] == 'W' ? 1 : 3) {
      SCOPED_TRACE(fmt::format("{} {}", journal, i));
      auto took = run(troubles[i], expected, journal);
      // Again where the machine may have been busy: one that is late for a reason is so each time.
      for (int again = 0; again < 5 && took > kLate; ++again) {
        took = run(troubles[i], expected, journal);
      }
      EXPECT_LT(took, kLate);
      slowest = std::max(slowest, took);
      if (testing::Test::HasFailure()) return;
    }
  }
  fmt::print("{} runs, the slowest tick took {:.1f} ms\n", troubles.size(),
             std::chrono::duration<double, std::milli>(slowest).count());
}

// The slowest step of writing what has waited.
SteadyClock::duration waitForADay() {
  TempStore store;
  SpanLog log(store.db);
  OtherProgram other(store.db.location().file());
  other.ask("BEGIN IMMEDIATE");
  constexpr int kDay = 8640;  // spans of ten seconds
  const auto record = [&](int from, int to) {
    for (int i = from; i < to; ++i) {
      log.open(
          {.start = i * 10.0, .end = i * 10.0, .app = "Firefox", .bundle = "org.mozilla.firefox"});
      log.describe("Une page au titre assez long pour une page — " + std::to_string(i),
                   "https://www.exemple.fr/un/chemin/assez/long/page?numero=" + std::to_string(i));
      log.close(i * 10.0 + 10);
    }
  };
  record(0, kDay);
  fmt::print("a day of spans takes {} bytes\n", log.bytes());
  EXPECT_EQ(log.waiting(), kDay);
  record(kDay, 12 * kDay);
  EXPECT_LT(log.bytes(), 9U << 20);
  const auto kept = static_cast<int>(log.waiting());
  EXPECT_FALSE(log.write());
  other.ask("ROLLBACK");
  auto slowest = SteadyClock::duration(0);
  bool written = false;
  for (int i = 0; i < 100 && !written; ++i) {
    const auto begin = SteadyClock::now();
    written = bool{log.write()};
    slowest = std::max(slowest, SteadyClock::now() - begin);
  }
  EXPECT_TRUE(written);
  EXPECT_EQ(log.bytes(), 0U);
  fmt::print("{} waited, the slowest step took {:.1f} ms\n", kept,
             std::chrono::duration<double, std::milli>(slowest).count());
  EXPECT_EQ(other.ask("SELECT count(*), min(start), max(end) FROM events"),
            fmt::format("{}|0.0|{}.0|\n", kept, kept * 10));
  return slowest;
}

TEST(StoreTrouble, ADayWaitsInMemoryAndIsStoredInSteps) {
  auto slowest = waitForADay();
  for (int again = 0; again < 5 && slowest > 3 * kLate; ++again) slowest = waitForADay();
  EXPECT_LT(slowest, 3 * kLate);
}

// Somebody leaves at second 40, and windows come to the front by themselves.
void leave(Capture& capture, int step) {
  capture.desktop.idle = step > 20 ? 2 * (step - 20) : 0;
  if (step % 12 == 0) capture.desktop.show(fmt::format("Rappel {}", step));
  capture.tick();
}

constexpr int kNoticed = 110;  // the step at which it is seen that nobody is there

TEST(StoreTrouble, WhatIsTakenBackIsTakenBackLater) {
  const auto spans = [](int from, int to) {
    Capture capture;
    OtherProgram other(capture.file());
    for (int step = 0; step < 150; ++step) {
      if (step == from) other.ask("BEGIN IMMEDIATE");
      if (step == to) other.ask("ROLLBACK");
      leave(capture, step);
    }
    capture.engine.finish();
    return capture.spans();
  };
  const auto expected = spans(-1, -1);
  EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 3) << expected;
  for (const int from : {5, 30, 80, kNoticed - 1, kNoticed}) {
    for (const int to : {kNoticed, kNoticed + 1, 149}) EXPECT_EQ(spans(from, to), expected) << from;
  }
}

TEST(StoreTrouble, KilledWhileItTakesBackItHasDoneAllOfThatOrNothing) {
  std::set<std::string> found;
  for (int write = 1; write < 30; ++write) {
    Capture capture;
    for (int step = 0; step < kNoticed; ++step) leave(capture, step);
    endOfChild([&] {
      FaultVfs::fail(Fault::Kill, write);
      leave(capture, kNoticed);
    });
    EXPECT_EQ(integrityOf(capture.file()), "ok|\n");
    EXPECT_EQ(OtherProgram(capture.file())
                  .ask("SELECT 1 FROM events a, events b WHERE a.id < b.id AND a.end > b.start"),
              "");
    found.insert(OtherProgram(capture.file()).ask("SELECT count(*), sum(idle) FROM events"));
  }
  EXPECT_EQ(found, (std::set<std::string>{"3|1|\n", "9|0|\n"}))
      << "neither is there without the other";
}

TEST(StoreTrouble, AFileThatIsTakenAwayIsGoneOnWithoutLoss) {
  enum class Way { Moved, Deleted, Replaced };
  for (const auto way : {Way::Moved, Way::Deleted, Way::Replaced}) {
    for (const bool watched : {false, true}) {
      SCOPED_TRACE(fmt::format("{} {}", static_cast<int>(way), watched));
      TempStore backup;
      backup.db.run("INSERT INTO events(start, end, app) VALUES (1, 2, 'Ancien')");
      backup.db.query("PRAGMA journal_mode=DELETE");
      Capture capture;
      auto& db = capture.store.db;
      const auto file = db.location().file();
      std::string told;
      db.setReplaced([&](const std::string& sentence) { told = sentence; });
      for (int step = 0; step < 55; ++step) act(capture, step);
      db.setSetting("idle_threshold", "99");
      const auto spans = capture.spans();
      // A reader that keeps the log from being emptied.
      std::optional<OtherProgram> reader;
      if (watched) reader.emplace(file).ask("BEGIN; SELECT count(*) FROM events");
      const auto away = capture.store.folder.path() / "ailleurs.db";
      if (way == Way::Moved) fs::rename(file, away);
      if (way == Way::Deleted) fs::remove(file);
      if (way == Way::Replaced) fs::copy_file(backup.db.location().file(), away);
      if (way == Way::Replaced) fs::rename(away, file);
      for (int step = 55; step < 62; ++step) act(capture, step);
      reader.reset();
      EXPECT_FALSE(told.empty());
      EXPECT_FALSE(db.condition());
      EXPECT_EQ(db.setting("idle_threshold"), way == Way::Replaced ? "180" : "99");
      capture.engine.finish();
      EXPECT_EQ(integrityOf(file), "ok|\n");
      const auto now = capture.spans();
      if (way == Way::Moved) {
        EXPECT_EQ(integrityOf(away), "ok|\n");
        EXPECT_EQ(difference(spans, spansIn(away)), "");
      }
      EXPECT_EQ(now.find("Ancien") != std::string::npos, way == Way::Replaced);
      // The span that was open is there from its beginning, and nothing of before.
      const auto all = withoutTrouble(62);
      const auto last = spans.rfind('\n', spans.size() - 2) + 1;
      EXPECT_TRUE(now.ends_with(all.substr(last))) << now << "\n\n" << all.substr(last);
      EXPECT_EQ(std::count(now.begin(), now.end(), '\n'),
                std::count(all.begin() + static_cast<long>(last), all.end(), '\n') +
                    (way == Way::Replaced ? 1 : 0));
    }
  }
}

TEST(StoreTrouble, AClockThatIsSetAndASlowMachineAreNoAbsence) {
  const struct {
    double awake, slept, set;
    const char* idle;  // seconds
  } cases[] = {
      {30, 0, 0, "NULL"},
      {100, 0, 0, "NULL"},
      {2, 0, 10 * 365 * 86400.0, "NULL"},
      {2, 0, 3600, "NULL"},
      {2, 15 * 86400.0, 0, "NULL"},
      {2, 13 * 86400.0, 0, "1123202.0"},
      {2, 600, 365 * 86400.0, "NULL"},
      {300, 0, 0, "300.0"},
      {2, 0, -3600, "NULL"},
  };
  for (const auto& [awake, slept, set, idle] : cases) {
    Capture capture;
    capture.desktop.show("A");
    for (int i = 0; i < 20; ++i) capture.tick();
    capture.clock.sleep(slept);
    capture.clock.step(set);
    capture.tick(awake);
    for (int i = 0; i < 20; ++i) capture.tick();
    capture.engine.finish();
    OtherProgram other(capture.file());
    EXPECT_EQ(other.ask("SELECT sum(end - start) FROM events WHERE idle=1"),
              std::string(idle) + "|\n")
        << awake << " " << slept << " " << set;
    EXPECT_GE(std::stod(other.ask("SELECT sum(end - start) FROM events WHERE idle=0")), 78 - 2);
  }
}

TEST(StoreTrouble, AgesAreNotCountedByAClockThatIsAhead) {
  constexpr double kDay = 86400;
  TempStore store;
  FakeClock clock;
  const double begin = clock.now;
  double up = 0;
  const auto run = [&] {
    up = 0;
    return std::make_unique<TrustedTime>(
        store.db, clock.read(), [&] { return Uptime{up, up}; }, [] { return false; });
  };
  const auto record = [&] {
    store.db.run("INSERT INTO events(start,end,app) VALUES (?,?,'A')",
                 {clock.now - 60, clock.now.load()});
  };
  EXPECT_LE(run()->now(), clock.now) << "nothing is recorded yet";
  record();
  // A few hours a day, and no network.
  for (int day = 0; day < 5; ++day, clock.now = clock.now + kDay) {
    record();
    EXPECT_EQ(run()->now(), clock.now) << day;
  }
  // Asked for the first time when the clock is ten years ahead already, and again in later runs.
  const double real = clock.now;
  store.db.run("DELETE FROM settings WHERE key='believed_time'");
  auto time = run();
  clock.now = clock.now + 3650 * kDay;
  record();
  for (int again = 1; again <= 3; ++again) {
    EXPECT_LE(time->now(), real + 2 * again * kDay);
    time = run();
  }
  up = kDay;
  EXPECT_EQ(time->now(), clock.now) << "a day of running confirms it";
  clock.now = begin;
  EXPECT_LE(run()->now(), begin);
}

// Ticks and range assignments in any order: time is neither lost nor counted twice.
TEST(StoreTrouble, WhatIsAssignedWhileItIsRecordedAddsUpToTheClock) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    Capture capture;
    auto& [store, desktop, clock, live, engine] = static_cast<Recording&>(capture);
    desktop.show("A");
    capture.tick();
    const double begin = clock.now;
    for (int step = 0; step < 120; ++step) {
      if (dice.oneIn(4)) desktop.show(std::string(1, static_cast<char>('A' + dice.upTo(3))), "t");
      desktop.idle = dice.oneIn(12) ? 180 + dice.upTo(100) : 0;
      capture.tick(dice.oneIn(9) ? 1.3 : 2);
      if (!dice.oneIn(8)) continue;
      clock.now = clock.now + dice.upTo(10) / 8.0;
      TimeRange range{begin + dice.upTo(240), 0};
      range.end = range.start + dice.upTo(100);
      ASSERT_TRUE(engine.hold(range));
      range.end = std::min(range.end, engine.limit().value_or(range.end));
      const bool fails = dice.oneIn(4);
      if (dice.oneIn(2)) capture.tick();
      {
        Transaction change(store.db);
        assignRange(change, range, std::to_string(step), {});
        EXPECT_TRUE(fails || change.commit());
      }
      if (dice.oneIn(2)) capture.tick();
      engine.release(!fails);
    }
    engine.finish();
    OtherProgram other(store.db.location().file());
    EXPECT_EQ(other.ask("SELECT a.id, b.id, b.start - a.end FROM (SELECT id, end, lead(id) OVER "
                        "(ORDER BY start, end) AS next FROM events) a JOIN events b ON b.id=a.next "
                        "WHERE abs(b.start - a.end) > 1e-6"),
              "");
    EXPECT_NEAR(std::stod(other.ask("SELECT sum(end - start) FROM events")), clock.now - begin,
                1e-3);
    EXPECT_EQ(other.ask("SELECT 1 FROM events WHERE end < start"), "");
  }
}

}  // namespace
}  // namespace orvanta::test
