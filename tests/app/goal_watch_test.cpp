// Goals and limits over days that pass quickly.
#include "app/goal_watch.h"

#include "bridge/goal_text.h"
#include "support/program.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

constexpr double kMinute = 60;
constexpr double kHour = 3600;

struct GoalWatchTest : testing::Test, Program {
  Texts notices;
  GoalWatch::Tell tell = [this](const auto& slot, const auto& notice) {
    notices.push_back(slot + " " + notice.title + " | " + notice.sentence);
  };
  GoalWatch watch{store.db, core.analytics, tell, clock.read()};

  double at(const Date& date, double hour) { return calendar.startOf(date) + hour * kHour; }
  void work(double from, double to, const char* category = "travail", const Value& project = {}) {
    store.db.run(
        "INSERT INTO events(start, end, app, domain, idle, category, project_id) "
        "VALUES (?,?,'Firefox','docs.xn--exmple-cva.fr',0,?,?)",
        {from, to, category, project});
  }
  // Works these hours of the day in steps of five minutes; the program looks after each.
  void live(const Date& date, double from, double to, GoalWatch& eyes) {
    constexpr double kStep = 5 * kMinute;
    for (auto now = at(date, from); now < at(date, to); now += kStep) {
      work(now, now + kStep);
      clock.now = now + kStep;
      eyes.look();
    }
  }
  int64_t save(const json::object& goal) {
    const auto answer = ask("goals.save", goal);
    return answer.as_object().contains("id") ? answer.at("id").as_int64() : -1;
  }
  json::object ofWork(const char* bound, const char* period, double hours) {
    return {{"subject", "category"},
            {"value", "travail"},
            {"bound", bound},
            {"period", period},
            {"seconds", static_cast<int64_t>(hours * kHour)}};
  }
  Texts told() { return std::exchange(notices, {}); }
};

TEST_F(GoalWatchTest, TwoNoticesADayWhateverHappensInBetween) {
  const Date first{2026, 3, 28};
  clock.now = at(first, 8);
  const auto id = save(ofWork("least", "day", 2));
  live(first, 8, 9.9, watch);
  EXPECT_EQ(told(), Texts{"goal-1 Objectif bientôt atteint | Travail\u00a0: 1 h 40 sur 2 h 00 "
                          "aujourd’hui."});
  GoalWatch restarted{store.db, core.analytics, tell, clock.read()};
  live(first, 9.9, 12, restarted);
  EXPECT_EQ(told(),
            Texts{"goal-1 Objectif atteint | Travail\u00a0: 2 h 00 sur 2 h 00 aujourd’hui."});
  // More is wanted, it is taken back, the goal is deleted and comes back.
  auto more = ofWork("least", "day", 4.5);
  more["id"] = id;
  save(more);
  live(first, 12, 13, restarted);
  const auto change = newestChange();
  EXPECT_EQ(change.at("label").as_string(),
            "Objectif enregistré\u00a0: Travail, au moins 4 h 30 par jour");
  EXPECT_TRUE(undo(change.at("id")));
  EXPECT_EQ(call("goals.list").at(0).at("seconds"), 7200);
  ask("goals.delete", {{"id", id}});
  restarted.look();
  EXPECT_EQ(call("goals.list"), json::array());
  EXPECT_TRUE(undo(lastChange()));
  restarted.look();
  GoalWatch again{store.db, core.analytics, tell, clock.read()};
  again.look();
  EXPECT_EQ(told(), Texts());
  // The night, in which the clocks go forward, begins another day.
  live(first, 23, 24, again);
  live({2026, 3, 29}, 0, 1.5, again);
  EXPECT_EQ(told().size(), 0U) << "an hour and a half";
  live({2026, 3, 29}, 1.5, 2.5, again);
  EXPECT_EQ(told().size(), 2U);
  // Who travels west has the day once more.
  const Calendar newYork{Glib::TimeZone::create("America/New_York")};
  const Analytics there{store.db, clock.read(), newYork};
  GoalWatch traveller{store.db, there, tell, clock.read()};
  traveller.look();
  EXPECT_EQ(there.today(), (Date{2026, 3, 28}));
  EXPECT_EQ(told(), Texts());
}

TEST_F(GoalWatchTest, WeeksLimitsSitesAndProjects) {
  const Date monday{2026, 10, 19};  // the clocks go back on its Sunday
  clock.now = at(monday, 8);
  const auto project = ask("projects.save", {{"name", "Thèse <b>"}}).at("id").as_int64();
  EXPECT_EQ(save(ofWork("most", "week", 10)), 1);
  save({{"subject", "project"},
        {"project_id", project},
        {"bound", "least"},
        {"period", "day"},
        {"seconds", 3600}});
  save({{"subject", "site"},
        {"value", "https://WWW.Exémple.fr/x"},
        {"bound", "most"},
        {"period", "day"},
        {"seconds", 3600}});
  EXPECT_EQ(save(ofWork("most", "week", 12)), -1) << "there is one already";
  for (int day = 0; day < 7; ++day) live(monday.plusDays(day), 0.5, 2, watch);
  work(at(monday.plusDays(7), 0) - kHour, at(monday.plusDays(7), 1), "loisir", project);
  const auto notices = told();
  ASSERT_EQ(notices.size(), 16U) << "of the week two, of the site two a day";
  EXPECT_TRUE(
      std::count(notices.begin(), notices.end(),
                 "goal-1 Limite atteinte | Travail\u00a0: 10 h 00 sur 10 h 00 cette semaine."));
  clock.now = at(monday.plusDays(7), 2);
  watch.look();
  EXPECT_EQ(told(),
            (Texts{"goal-2 Objectif atteint | Thèse <b>\u00a0: 1 h 00 sur 1 h 00 aujourd’hui.",
                   "goal-3 Limite atteinte | exémple.fr\u00a0: 1 h 00 sur 1 h 00 aujourd’hui."}))
      << "of a night the part after midnight";
  EXPECT_EQ(
      goalsLine(watch.look()),
      "Objectifs\u00a0: Travail 0 s sur 10 h 00 cette semaine · Thèse <b> 1 h 00 sur 1 h 00 · "
      "exémple.fr 1 h 00 sur 1 h 00");

  const auto past = ask("goals.history", {{"from", "2026-10-19"}, {"to", "2026-10-26"}});
  EXPECT_EQ(past.at(0).at("pieces").at(0).at("outcome"), "missed");
  EXPECT_EQ(past.at(0).at("pieces").at(0).at("to"), "2026-10-25");
  EXPECT_EQ(past.at(0).at("pieces").at(0).at("done").to_number<double>(), 10.5 * kHour);
  EXPECT_EQ(past.at(1).at("pieces").at(0).at("outcome"), "missed");
  EXPECT_EQ(past.at(1).at("pieces").at(7).at("outcome"), "kept");
  EXPECT_EQ(past.at(1).at("streak").to_number<int>(), 2);
  const auto before = ask("goals.history", {{"from", "2026-10-12"}, {"to", "2026-10-18"}});
  EXPECT_EQ(before.at(1).at("pieces").at(6).at("outcome"), "before");

  ask("projects.delete", {{"id", project}});
  EXPECT_EQ(call("goals.list").at(1).at("missing"), true);
  clock.now = at(monday.plusDays(8), 1);
  watch.look();
  EXPECT_EQ(told(), Texts());
  EXPECT_EQ(call("goals.list").at(1).at("name"), "projet supprimé");
}

TEST_F(GoalWatchTest, WhatNobodyCanMeanIsRefused) {
  const char* hostile[] = {
      R"({})",
      R"({"subject":"category","value":"inactif","period":"day","bound":"most","seconds":3600})",
      R"({"subject":"category","value":"travail","period":"month","bound":"most","seconds":3600})",
      R"({"subject":"category","value":"travail","period":"day","bound":"most","seconds":90000})",
      R"({"subject":"category","value":"travail","period":"day","bound":"most","seconds":-1})",
      R"({"subject":"project","project_id":7,"period":"day","bound":"most","seconds":3600})",
      R"({"subject":"site","value":"/","period":"day","bound":"most","seconds":3600})",
      R"({"subject":"app","value":"a\u0000b","period":"day","bound":"most","seconds":3600})",
      R"({"id":9,"subject":"app","value":"a","period":"day","bound":"most","seconds":3600})"};
  for (const auto* body : hostile) {
    EXPECT_TRUE(call("goals.save", body).at("error").is_string()) << body;
  }
  store.db.run(
      "INSERT INTO goals VALUES (1,'mood','x',NULL,'day','most',1,0),"
      "(2,'app','x',NULL,'day','most','much',0)");
  EXPECT_EQ(call("goals.list"), json::array());
}

}  // namespace
}  // namespace orvanta::test
