#include "capture/engine.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

class EngineTest : public testing::Test {
 protected:
  // One tick every 2 seconds until `seconds` have passed.
  void run(int seconds) {
    for (int i = 0; i < seconds / 2; ++i) {
      clock.now = clock.now + 2;
      engine.tick();
    }
  }

  // The stored spans, "app start-end", in seconds since the test began; idle ones as "Inactif".
  std::vector<std::string> spans() {
    std::vector<std::string> list;
    for (const auto& row : store.db.query("SELECT * FROM events ORDER BY id")) {
      list.push_back(fmt::format("{} {:g}-{:g}", row.str("app").value_or("NULL"),
                                 row.dbl("start") - begin, row.dbl("end") - begin));
    }
    return list;
  }
  using Spans = std::vector<std::string>;

  Row lastSpan() { return store.db.query("SELECT * FROM events ORDER BY id DESC LIMIT 1").front(); }

  void sleep(double seconds) { clock.sleep(seconds); }
  void setClock(double seconds) { clock.step(seconds); }

  test::TempStore store;
  test::FakeDesktop desktop;
  test::FakeClock clock;
  const double begin = clock.now;
  LiveState live{clock.read(), false};
  Engine engine{store.db, desktop.collectors, live, clock.read(), clock.uptime()};
};

TEST_F(EngineTest, AnOpenSpanIsAtMostTenSecondsBehindInTheStore) {
  desktop.show("A", "titre");
  run(2);
  EXPECT_EQ(spans(), Spans{"A 2-2"});
  for (int second = 4; second <= 60; second += 2) {
    run(2);
    EXPECT_GT(lastSpan().dbl("end"), clock.now - 10);
  }
  engine.finish();
  EXPECT_EQ(spans(), Spans{"A 2-60"});
}

TEST_F(EngineTest, ATickThatIsEarlyByAHairCounts) {
  const auto hair = 0.01;
  desktop.show("A");
  setClock(hair);
  run(2);
  setClock(-hair);
  run(10);
  EXPECT_EQ(lastSpan().dbl("end"), clock.now);
  desktop.show("B");
  setClock(hair);
  run(2);
  setClock(-hair);
  run(8);
  EXPECT_EQ(lastSpan().str("app"), "B");
}

TEST_F(EngineTest, AGlanceIsNoSpanAndAStayIsBackDated) {
  desktop.show("A");
  run(20);
  desktop.show("B");
  run(4);
  desktop.show("A");
  run(10);
  EXPECT_EQ(spans().size(), 1U);
  desktop.show("B");
  run(8);  // four ticks: not yet
  EXPECT_EQ(spans().size(), 1U);
  run(2);
  EXPECT_EQ(spans(), (Spans{"A 2-36", "B 36-36"}));
  desktop.show("C");
  run(4);
  desktop.show("D");  // another candidate starts its own count
  run(10);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-36", "B 36-50", "D 50-58"}));
}

TEST_F(EngineTest, IdleIsBackDatedToTheLastInputAndEndsAtOnce) {
  desktop.show("A");
  run(300);
  desktop.idle = 200;
  run(2);
  EXPECT_EQ(spans(), (Spans{"A 2-102", "Inactif 102-302"}));
  run(10);
  desktop.idle = 0;
  run(2);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-102", "Inactif 102-314", "A 314-314"}));
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE idle=1").size(), 1U);
}

TEST_F(EngineTest, BackDatingNeverReachesIntoAnotherSpan) {
  desktop.show("A");
  run(40);
  desktop.show("B");  // a program that came to the front by itself
  run(40);
  desktop.idle = 190;
  run(2);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-42", "B 42-42", "Inactif 42-82"}));
}

TEST_F(EngineTest, WatchingAVideoIsActivityAlsoInHindsight) {
  desktop.show("Lecteur");
  desktop.awake = true;
  for (int i = 0; i < 300; ++i) {
    desktop.idle = i * 2.0;
    run(2);
  }
  EXPECT_EQ(spans().size(), 1U);
  desktop.awake = false;
  desktop.idle = 602;
  run(2);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"Lecteur 2-600", "Inactif 600-602"}));
  desktop.inhibitionQuestions = 0;
  desktop.idle = 0;
  run(20);
  EXPECT_EQ(desktop.inhibitionQuestions, 0);  // not asked while there is input
}

TEST_F(EngineTest, TheLockedScreenAndTheGreeterAreIdle) {
  desktop.show("A");
  run(10);
  engine.setLocked(true);
  run(10);
  engine.setLocked(false);
  run(10);
  desktop.app = FrontmostApp{"Connexion", "lightdm-gtk-greeter", 1};
  run(4);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-12", "Inactif 12-22", "A 22-32", "Inactif 32-34"}));
}

TEST_F(EngineTest, AGapIsIdleTimeAndALongOneEndsTheProject) {
  live.setCurrentProjectId(5);
  desktop.show("A");
  run(10);
  sleep(1800);
  engine.tick();
  EXPECT_EQ(live.currentProjectId(), 5);
  run(10);
  EXPECT_EQ(lastSpan().int_("project_id"), 5);
  sleep(3700);
  engine.tick();
  engine.finish();
  EXPECT_FALSE(live.currentProjectId() || live.currentProjectSince());
  EXPECT_EQ(spans(), (Spans{"A 2-10", "Inactif 10-1810", "A 1810-1820", "Inactif 1820-5520",
                            "A 5520-5520"}));
  EXPECT_TRUE(store.db.query("SELECT 1 FROM events WHERE idle=1 AND project_id NOT NULL").empty());
}

TEST_F(EngineTest, SleepEndsTheSpanAndIsCountedOnce) {
  desktop.show("A");
  run(10);
  sleep(1);
  engine.willSleep();
  sleep(1);
  engine.tick();  // still awake for a moment
  sleep(600);
  engine.didWake();
  desktop.idle = 500;  // the machine was woken by its clock
  engine.tick();
  run(2);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-11", "Inactif 12-612", "Inactif 612-614"}));
}

TEST_F(EngineTest, NewsOfSleepThatArrivesAfterItDoesNotCountTheSleep) {
  desktop.show("A");
  run(10);
  sleep(600);
  engine.willSleep();
  engine.didWake();
  engine.tick();
  EXPECT_EQ(spans(), (Spans{"A 2-10", "Inactif 10-610", "A 610-610"}));
}

TEST_F(EngineTest, PausedMeansNothingButGapsIsRecorded) {
  desktop.show("A");
  run(10);
  live.setPaused(true);
  engine.pause();
  run(100);
  sleep(60);
  engine.tick();
  run(10);
  live.setPaused(false);
  run(2);
  EXPECT_EQ(spans(), (Spans{"A 2-10", "Inactif 110-170", "A 182-182"}));
}

TEST_F(EngineTest, AClockSetBackNeverShortensWhatIsRecorded) {
  desktop.show("A");
  run(100);
  setClock(-7);  // a correction: time stands still until the clock has caught up
  run(20);
  EXPECT_EQ(spans(), Spans{"A 2-113"});
  setClock(-3600);  // the user set the clock
  run(20);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-113", "A -3485--3467"}));
}

TEST_F(EngineTest, KeepsTheTitleSeenLongestWithItsUrl) {
  desktop.browse("https://exemple.fr/un", "Un");
  run(6);
  desktop.browse("https://exemple.fr/deux", "Deux");
  run(30);
  desktop.browse("https://exemple.fr/trois", "Trois");
  run(10);
  engine.finish();
  EXPECT_EQ(spans(), Spans{"Firefox 2-46"});
  EXPECT_EQ(lastSpan().str("title"), "Deux");
  EXPECT_EQ(lastSpan().str("url"), "https://exemple.fr/deux");
  EXPECT_EQ(lastSpan().str("domain"), "exemple.fr");
}

TEST_F(EngineTest, AmongThousandsOfTitlesTheLongestIsFound) {
  desktop.browse("https://exemple.fr/un", "Un");
  run(40);
  for (int i = 0; i < 2000; ++i) {
    const bool again = i % 4 == 0;
    desktop.browse("https://exemple.fr/", again ? "Deux" : "Titre " + std::to_string(i));
    run(2);
  }
  desktop.browse("https://exemple.fr/deux", "Deux");
  run(2);
  engine.finish();
  EXPECT_EQ(spans().size(), 1U);
  EXPECT_EQ(lastSpan().str("title"), "Deux");
}

TEST_F(EngineTest, AnythingButABrowserIsKnownByItsWindowTitle) {
  desktop.browse("", "");
  desktop.tabs.begin()->second = {};  // a private window
  run(2);
  EXPECT_FALSE(lastSpan().str("title"));
  EXPECT_FALSE(lastSpan().str("url"));
  engine.finish();
  desktop.tabs.clear();
  run(2);
  EXPECT_EQ(lastSpan().str("title"), "titre de fenêtre");
  EXPECT_FALSE(lastSpan().str("url"));
  engine.finish();
  desktop.title = " \t ";
  run(2);
  EXPECT_FALSE(lastSpan().str("title"));
  engine.finish();
  desktop.title = "visible";
  desktop.readable = false;
  run(2);
  EXPECT_FALSE(lastSpan().str("title"));
  desktop.app.reset();
  engine.finish();
  run(2);
  EXPECT_EQ(lastSpan().str("app"), "Inconnu");
}

TEST_F(EngineTest, ExcludedSitesAndThePrivateModeLeaveNoTrace) {
  struct Case {
    const char* excluded;
    const char* mode;
    std::optional<std::string> title, domain;
  };
  const Case cases[] = {
      {"[]", "full", "Secret", "sous.exemple.fr"},
      {R"(["Exemple.FR"])", "full", {}, {}},
      {R"(["sous.exemple.fr"])", "full", {}, {}},
      {R"(["ple.fr", "autre.fr"])", "full", "Secret", "sous.exemple.fr"},
      {R"(["exemple.fr", 3])", "full", "Secret", "sous.exemple.fr"},  // no list of texts: no list
      {"pas du json", "full", "Secret", "sous.exemple.fr"},
      {"[]", "domain", {}, "sous.exemple.fr"},
      {"[]", "autre", "Secret", "sous.exemple.fr"},
  };
  desktop.browse("https://www.sous.exemple.fr/page", "Secret");
  for (const auto& [excluded, mode, title, domain] : cases) {
    store.db.setSetting("excluded_domains", excluded);
    store.db.setSetting("privacy_mode", mode);
    engine.finish();
    run(2);
    EXPECT_EQ(lastSpan().str("title"), title) << excluded << mode;
    EXPECT_EQ(lastSpan().str("url").has_value(), title.has_value()) << excluded << mode;
    EXPECT_EQ(lastSpan().str("domain"), domain) << excluded << mode;
    EXPECT_EQ(lastSpan().str("app"), "Firefox");
  }
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
  EXPECT_EQ(spans().size(), 1U);
  change(0, 10, true);
  EXPECT_EQ(spans(), (Spans{"A 2-36", "A 36-36"}));
  store.db.run("UPDATE events SET end=? WHERE id=1", {begin + 10});  // what the range then does
  run(20);
  engine.finish();
  EXPECT_EQ(spans(), (Spans{"A 2-10", "A 36-58"}));
}

}  // namespace
}  // namespace orvanta
