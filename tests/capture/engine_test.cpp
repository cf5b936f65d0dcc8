#include "capture/engine.h"

#include <fmt/ranges.h>

#include <cctype>
#include <sstream>

#include "support/recording.h"

namespace orvanta::test {
namespace {

struct Life : Recording {
  // One tick every 2 seconds until `seconds` have passed.
  void run(int seconds) {
    for (int i = 0; i < seconds / 2; ++i) {
      if (away) desktop.idle = desktop.idle + 2;
      tick();
    }
  }

  // What happens, one word after the other; a capital is an application that comes to the front, a
  // number the seconds that pass.
  void spend(const std::string& day) {
    std::istringstream words(day);
    for (std::string word; words >> word;) {
      const auto is = word.find('=');
      const auto what = word.substr(0, is);
      const double value = is == word.npos ? 0 : std::stod(word.substr(is + 1));
      if (std::isdigit(word.front())) run(std::stoi(word));
      if (std::isupper(word.front())) desktop.show(word);
      if (what == "greeter") desktop.app = FrontmostApp{"Connexion", "lightdm-gtk-greeter", 1};
      if (what == "idle") desktop.idle = value;
      if (what == "away" || what == "back") away = what == "away";
      if (what == "back") desktop.idle = 0;
      if (what == "film") desktop.awake = value > 0;
      if (what == "lock" || what == "unlock") engine.setLocked(what == "lock");
      if (what == "sleep") clock.sleep(value);
      if (what == "clock") clock.step(value);
      if (what == "tick") engine.tick();
      if (what == "lid") engine.willSleep();
      if (what == "wake") engine.didWake();
      if (what == "resume") live.setPause({});
      if (what == "pause") {
        live.setPause(
            Pause{clock.now, value > 0 ? std::optional(clock.now + value) : std::nullopt});
        engine.pause();
      }
    }
  }

  // The stored spans, "app start-end", in seconds since the test began; idle ones are "Inactif".
  std::string spans() {
    Texts list;
    for (const auto& row : store.db.query("SELECT * FROM events ORDER BY id")) {
      const auto app = row.str("app").value_or("NULL");
      list.push_back(
          fmt::format("{} {:g}-{:g}", app, row.dbl("start") - begin, row.dbl("end") - begin));
      EXPECT_EQ(row.int_("idle") == 1, app == "Inactif") << list.back();
    }
    return fmt::format("{}", fmt::join(list, ", "));
  }

  const double begin = clock.now;
  bool away = false;
};

struct EngineTest : testing::Test, Life {};

TEST_F(EngineTest, AnOpenSpanIsAtMostTenSecondsBehindInTheStore) {
  desktop.show("A", "titre");
  run(2);
  EXPECT_EQ(spans(), "A 2-2");
  for (int second = 4; second <= 60; second += 2) {
    run(2);
    EXPECT_GT(lastSpan().dbl("end"), clock.now - 10);
  }
  engine.finish();
  EXPECT_EQ(spans(), "A 2-60");
}

TEST_F(EngineTest, ATickThatIsEarlyByAHairCounts) {
  spend("A clock=0.01 2 clock=-0.01 10");
  EXPECT_EQ(lastSpan().dbl("end"), clock.now);
  spend("B clock=0.01 2 clock=-0.01 8");
  EXPECT_EQ(lastSpan().str("app"), "B");
}

TEST_F(EngineTest, AGlanceIsNoSpanAndAStayIsBackDated) {
  spend("A 20 B 4 A 10");
  EXPECT_EQ(count(), 1U);
  spend("B 8");  // four ticks: not yet
  EXPECT_EQ(count(), 1U);
  spend("2");
  EXPECT_EQ(spans(), "A 2-36, B 36-36");
  spend("C 4 D 10");  // another candidate starts its own count
  engine.finish();
  EXPECT_EQ(spans(), "A 2-36, B 36-50, D 50-58");
}

TEST(Engine, ADayIsStoredAsItWasSpent) {
  const struct {
    const char *what, *day, *spans;
  } cases[] = {
      {"idle time is back-dated to the last input", "A 300 idle=200 2", "A 2-102, Inactif 102-302"},
      {"and ends at once", "A 300 idle=200 12 idle=0 2", "A 2-102, Inactif 102-314, A 314-314"},
      {"what comes to the front by itself while nobody is there is no activity",
       "A 40 away B 60 C 60 D 80 back A 20", "A 2-40, Inactif 40-242, A 242-260"},
      {"but what began before is, until the last input", "A 20 B 40 away 20 C 180 back 2",
       "A 2-22, B 22-60, Inactif 60-262, C 262-262"},
      {"nobody has come since the start", "away idle=900 2 idle=20 B 30 C 170 back 2",
       "Inactif -900-4, Inactif 4-204, C 204-204"},
      {"not into a film, though other films follow it",
       "film=1 A 20 away B 200 C 60 film=0 D 60 back 2",
       "A 2-22, B 22-222, C 222-280, Inactif 280-342, D 342-342"},
      {"nor into a pause, nor what was before it", "A 20 away B 20 pause 40 resume C 140 back 2",
       "A 2-22, B 22-40, Inactif 82-222, C 222-222"},
      {"a pause with an end ends to the second", "A 20 pause=61 B 80", "A 2-20, B 81-100"},
      {"also while nobody is there", "A 20 away pause=3601 4000 back 4",
       "A 2-20, Inactif 3621-4022, A 4022-4024"},
      {"the locked screen and the greeter are idle", "A 10 lock 10 unlock 10 greeter 4",
       "A 2-12, Inactif 12-22, A 22-32, Inactif 32-34"},
      // Still awake for a moment after the news; woken by its clock.
      {"sleep ends the span and is counted once",
       "A 10 sleep=1 lid sleep=1 tick sleep=600 wake idle=500 tick 2",
       "A 2-11, Inactif 12-612, Inactif 612-614"},
      {"news of sleep that arrives after it does not count the sleep",
       "A 10 sleep=600 lid wake tick", "A 2-10, Inactif 10-610, A 610-610"},
      {"paused, nothing but gaps is recorded", "A 10 pause 100 sleep=60 tick 10 resume 2",
       "A 2-10, Inactif 110-170, A 182-182"},
      {"after a correction time stands still until the clock has caught up", "A 100 clock=-7 20",
       "A 2-113"},
      {"a clock that the user sets back shortens nothing", "A 100 clock=-7 20 clock=-3600 20",
       "A 2-113, A -3485--3467"},
  };
  for (const auto& [what, day, spans] : cases) {
    Life life;
    life.spend(day);
    life.engine.finish();
    EXPECT_EQ(life.spans(), spans) << what;
  }
}

TEST(Engine, AKilledRunEndsWithTheLastInput) {
  const struct {
    const char *what, *day, *sql, *spans;
  } cases[] = {
      {"of the time without input nothing stays", "A 60 away 100", "", "A 2-60"},
      {"nor of what came to the front by itself", "A 20 B 40 away 20 C 60 D 50", "",
       "A 2-22, B 22-60"},
      {"unless somebody has said what it was", "A 40 away B 60 C 60",
       "UPDATE events SET category='travail' WHERE app='C'", "A 2-40, C 102-152"},
      {"a short while is none", "A 60 away 20", "", "A 2-72"},
      {"who is back was there", "A 60 away 100 back 20", "", "A 2-172"},
      {"also in another window", "A 60 away 100 back B 22", "", "A 2-162, B 162-182"},
      {"a film is watched", "film=1 A 60 away 100", "", "A 2-152"},
      {"until it ends", "A 60 away film=1 60 film=0 60", "", "A 2-120"},
      {"what was before a pause stays", "A 60 away 60 pause 2 resume 60", "", "A 2-120"},
      {"another program has gone on since", "A 60 away 100",
       "INSERT INTO events(start,end,app,idle) VALUES (2e9,2e9,'Z',0)", "A 2-152, Z 3e+08-3e+08"},
  };
  for (const auto& [what, day, sql, spans] : cases) {
    Life life;
    life.spend(day);
    life.store.db.exec(sql);
    Engine next(life.store.db, life.desktop.collectors, life.live, life.clock.read(),
                life.clock.uptime());
    next.takeUp();
    EXPECT_EQ(life.spans(), spans) << what;
    next.takeUp();
    EXPECT_EQ(life.spans(), spans) << what;
    EXPECT_EQ(life.store.db.setting("last_input"), "") << what;
  }
  // One that ended by itself has said all; one that is still away goes on from there.
  Life life;
  life.spend("A 60 away 100");
  life.engine.finish();
  Engine next(life.store.db, life.desktop.collectors, life.live, life.clock.read(),
              life.clock.uptime());
  next.takeUp();
  EXPECT_EQ(life.spans(), "A 2-160");
}

TEST_F(EngineTest, SomebodyWhoIsBackIsToldOncePerAbsence) {
  Texts told;
  engine.setReturned([&](const TimeRange& absence) {
    told.push_back(fmt::format("{:g}-{:g}", absence.start - begin, absence.end - begin));
  });
  const auto after = [&](const char* day) {
    told.clear();
    spend(day);
    return fmt::format("{}", fmt::join(told, ", "));
  };
  EXPECT_EQ(after("away idle=500 2 back A 20"), "") << "there was nobody before";
  EXPECT_EQ(after("away 300 back 4"), "") << "perhaps only a glance";
  EXPECT_EQ(after("20"), "22-324");
  EXPECT_EQ(after("lock 600 unlock 2 lock 100 unlock 40"), "348-1050") << "locked once more";
  EXPECT_EQ(after("sleep=900 tick 2 lock 60 unlock 10"), "1088-2052");
  EXPECT_EQ(after("away 300 film=1 60"), "") << "a film that starts by itself is nobody";
  EXPECT_EQ(after("film=0 back 10"), "2060-2362");
  EXPECT_EQ(after("pause 900 resume 20 away 200 pause 10 resume back 20"), "");
}

TEST_F(EngineTest, WatchingAVideoIsActivityAlsoInHindsight) {
  desktop.show("Lecteur");
  desktop.awake = true;
  for (int i = 0; i < 300; ++i, tick()) desktop.idle = i * 2.0;
  EXPECT_EQ(count(), 1U);
  desktop.awake = false;
  spend("idle=602 2");
  engine.finish();
  EXPECT_EQ(spans(), "Lecteur 2-600, Inactif 600-602");
  desktop.inhibitionQuestions = 0;
  spend("idle=0 20");
  EXPECT_EQ(desktop.inhibitionQuestions, 0);  // not asked while there is input
}

TEST_F(EngineTest, AGapIsIdleTimeAndALongOneEndsTheProject) {
  live.setCurrentProjectId(5);
  spend("A 10 sleep=1800 tick");
  EXPECT_EQ(live.currentProjectId(), 5);
  run(10);
  EXPECT_EQ(lastSpan().int_("project_id"), 5);
  spend("sleep=3700 tick");
  engine.finish();
  EXPECT_FALSE(live.currentProjectId() || live.currentProjectSince());
  EXPECT_EQ(spans(), "A 2-10, Inactif 10-1810, A 1810-1820, Inactif 1820-5520, A 5520-5520");
  EXPECT_TRUE(store.db.query("SELECT 1 FROM events WHERE idle=1 AND project_id NOT NULL").empty());
}

TEST_F(EngineTest, ASpanThatCouldNotBeStoredIsStoredLater) {
  store.db.exec("ALTER TABLE events RENAME TO away");
  desktop.show("A", "titre");
  run(20);
  EXPECT_EQ(live.activity()->id, -1);
  store.db.exec("ALTER TABLE away RENAME TO events");
  run(20);
  EXPECT_EQ(live.activity()->id, 1);
  EXPECT_EQ(lastSpan().str("title"), "titre");
  store.db.exec("DROP TABLE events");
  engine.finish();
}

TEST_F(EngineTest, ASpanIsSplitWhereARangeOverlapsIt) {
  desktop.show("A");
  run(30);
  const auto change = [&](double start, double end, bool changed) {
    EXPECT_TRUE(engine.hold({begin + start, begin + end}));
    run(2);
    engine.release(changed);
  };
  change(-10, 2, true);
  change(40, 50, true);
  change(0, 10, false);
  EXPECT_EQ(count(), 1U);
  change(0, 10, true);
  EXPECT_EQ(spans(), "A 2-36, A 36-36");
  store.db.run("UPDATE events SET end=? WHERE id=1", {begin + 10});  // what the range then does
  run(20);
  engine.finish();
  EXPECT_EQ(spans(), "A 2-10, A 36-58");
}

}  // namespace
}  // namespace orvanta::test
