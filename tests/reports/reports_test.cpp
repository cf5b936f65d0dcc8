#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "app/route_call.h"
#include "classify/rule_set.h"
#include "reports/agg.h"
#include "reports/analytics.h"
#include "reports/timeline.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// Spans as reports receive them, built without a store.
class ReportsTest : public testing::Test {
 protected:
  Ev& add(double start, double end, const char* app = "A", const char* cat = "travail") {
    return events.emplace_back(Ev{.id = static_cast<int64_t>(events.size()) + 1,
                                  .start = start,
                                  .end = end,
                                  .app = pool.intern(app),
                                  .cat = pool.intern(cat)});
  }
  Ev& addIdle(double start, double end) {
    auto& ev = add(start, end, "Inactif", "inactif");
    ev.idle = true;
    return ev;
  }

  StringPool pool;
  std::vector<Ev> events;
};

TEST_F(ReportsTest, TotalsCountIdleTimeAsNoActivity) {
  add(0, 100).pid = 1;
  auto& web = add(100, 130, "Firefox", "loisir");
  web.domain = pool.intern("x.fr");
  web.pid = 2;
  add(130, 140, "Chromium", "autre").domain = pool.intern("x.fr");
  add(500, 400, "Rétrograde");
  auto& idle = addIdle(140, 740);
  idle.cat = pool.intern("travail");
  idle.pid = 99;  // deleted
  const Projects projects{{1, {.id = 1, .name = "Un", .color = "#111"}},
                          {2, {.id = 2, .name = "Deux", .color = "#222"}}};
  EXPECT_EQ(json::value(aggJson(aggregate(events), projects)), json::parse(R"({"active": 140.0,
        "by_category": {"travail": 700.0, "loisir": 30.0, "autre": 10.0},
        "by_project": [{"id": 1, "name": "Un", "color": "#111", "duration": 100.0},
                       {"id": 2, "name": "Deux", "color": "#222", "duration": 30.0}],
        "apps": [{"name": "A", "duration": 100.0, "cats": [["travail", 100.0]]},
                 {"name": "Firefox", "duration": 30.0, "cats": [["loisir", 30.0]]},
                 {"name": "Chromium", "duration": 10.0, "cats": [["autre", 10.0]]},
                 {"name": "Rétrograde", "duration": 0.0, "cats": [["travail", 0.0]]}],
        "domains": [{"name": "x.fr", "app": "Firefox", "duration": 40.0,
                     "cats": [["loisir", 30.0], ["autre", 10.0]]}]})"));
}

TEST_F(ReportsTest, AnApplicationShowsItsFiveLargestCategories) {
  for (int i = 0; i < 6; ++i) add(0, 10 + i, "A", ("c" + std::to_string(i)).c_str());
  const auto totals = aggJson(aggregate(events), {});
  const auto& cats = totals.at("apps").at(0).at("cats").as_array();
  ASSERT_EQ(cats.size(), 5U);
  EXPECT_EQ(cats.front().at(0), "c5");
  EXPECT_EQ(cats.back().at(0), "c1");
}

TEST_F(ReportsTest, SegmentsJoinWhatIsLessThanThreeSecondsApart) {
  add(0, 10);
  add(12.9, 20, "B");
  add(20, 20.5, "Bref", "loisir");  // too short to be drawn
  addIdle(20, 21);
  add(23, 30, "C").domain = pool.intern("c.fr");
  add(30, 40).pid = 4;
  add(35, 60, "D").pid = 4;  // an overlap continues
  add(60, 62, "E").pid = 4;
  add(62, 65, "F").pid = 4;
  add(65, 66, "D", "loisir").pid = 4;
  EXPECT_EQ(json::value(segments(events)),
            json::parse(R"([{"start":0.0,"end":20.0,"cat":"travail","pid":null,"top":["A","B"]},
              {"start":23.0,"end":30.0,"cat":"travail","pid":null,"top":["c.fr"]},
              {"start":30.0,"end":65.0,"cat":"travail","pid":4,"top":["D","A","F"]},
              {"start":65.0,"end":66.0,"cat":"loisir","pid":4,"top":["D"]}])"));
  EXPECT_TRUE(segments({}).empty());
}

TEST_F(ReportsTest, BlocksJoinTheSameActivityAndDropShortOnes) {
  add(0, 40).title = pool.intern("court");
  add(44.9, 100).title = pool.intern("long");
  events.back().manual = true;  // the block is what its first span is
  add(105, 170);                // five seconds later: another block
  add(170, 230).pid = 1;
  add(230, 290, "A", "loisir").pid = 1;
  addIdle(290, 330);
  add(330, 389, "Bref");
  EXPECT_EQ(json::value(blocks(events, 60)), json::parse(R"([
    {"start":0.0,"end":100.0,"duration":100.0,"app":"A","domain":null,"cat":"travail","pid":null,
     "idle":false,"ids":[1,2],"manual":false,"title":"long"},
    {"start":105.0,"end":170.0,"duration":65.0,"app":"A","domain":null,"cat":"travail","pid":null,
     "idle":false,"ids":[3],"manual":false,"title":null},
    {"start":170.0,"end":230.0,"duration":60.0,"app":"A","domain":null,"cat":"travail","pid":1,
     "idle":false,"ids":[4],"manual":false,"title":null},
    {"start":230.0,"end":290.0,"duration":60.0,"app":"A","domain":null,"cat":"loisir","pid":1,
     "idle":false,"ids":[5],"manual":false,"title":null},
    {"start":290.0,"end":330.0,"duration":40.0,"app":"Inactif","domain":null,"cat":"inactif",
     "pid":null,"idle":true,"ids":[6],"manual":false,"title":null}])"));
}

class AnalyticsTest : public testing::Test {
 protected:
  void add(double start, double end, const char* app, bool idle = false) {
    store.db.run("INSERT INTO events(start,end,app,idle) VALUES (?,?,?,?)",
                 {start, end, app, idle});
  }

  test::TempStore store;
  test::FakeClock clock;
  Calendar paris{Glib::TimeZone::create("Europe/Paris")};
  Analytics analytics{store.db, clock.read(), paris};
  const double midnight = paris.startOf({2023, 11, 15});  // the test clock shows 14 Nov, 23:13
};

TEST_F(AnalyticsTest, DayClipsToTheLocalDay) {
  add(midnight - 3600, midnight + 3600, "Nuit");
  add(midnight - 50000, midnight + 10000, "Inactif", true);
  add(midnight + 3600, midnight + 3700, "Matin");
  store.db.run("INSERT INTO projects(name) VALUES ('b'), ('É'), ('Z')");
  const auto day = analytics.day("2023-11-15");
  EXPECT_EQ(day.at("date"), "2023-11-15");
  EXPECT_EQ(day.at("start"), midnight);
  EXPECT_EQ(day.at("end"), midnight + 86400);
  EXPECT_EQ(day.at("first"), midnight);
  EXPECT_EQ(day.at("last"), midnight + 3700);
  EXPECT_EQ(day.at("totals").at("active"), 3700.0);
  EXPECT_EQ(day.at("totals").at("by_category").at("inactif"), 10000.0);
  EXPECT_EQ(day.at("segments").as_array().size(), 1U);
  EXPECT_EQ(day.at("blocks").as_array().size(), 3U);
  std::string names;
  for (const auto& project : day.at("projects").as_array()) names += project.at("name").as_string();
  EXPECT_EQ(names, "ZbÉ");
  EXPECT_EQ(analytics.day("2023-11-14").at("totals").at("active"), 3600.0);
}

TEST_F(AnalyticsTest, TotalsAreThoseOfTheDay) {
  add(midnight - 3600, midnight + 3600, "Nuit");
  add(midnight + 3600, midnight + 3700, "Inactif", true);
  store.db.run("INSERT INTO projects(name) VALUES ('A')");
  const auto day = analytics.day("2023-11-15");
  const auto totals = analytics.totals("2023-11-15");
  EXPECT_EQ(totals.size(), 2U);
  for (const auto& [key, value] : totals) EXPECT_EQ(value, day.at(key)) << key;
}

TEST_F(AnalyticsTest, DayMeansTodayWhereNoDateIsGiven) {
  for (const auto& text :
       {std::optional<std::string>(), std::optional<std::string>("2023-13-01")}) {
    EXPECT_EQ(analytics.day(text).at("date"), "2023-11-14");
  }
  EXPECT_TRUE(analytics.day({}).at("first").is_null());
}

TEST_F(AnalyticsTest, DayBlocksFollowTheSetting) {
  add(midnight, midnight + 50, "A");
  const auto count = [&] { return analytics.day("2023-11-15").at("blocks").as_array().size(); };
  EXPECT_EQ(count(), 0U);
  store.db.setSetting("min_block_seconds", "50");
  EXPECT_EQ(count(), 1U);
  store.db.setSetting("min_block_seconds", "cinquante");
  EXPECT_EQ(count(), 0U);
}

TEST_F(AnalyticsTest, WeekSplitsAtMidnightAndRecapBooksOnTheStartDay) {
  // The night from Tuesday to Wednesday, and Sunday; a span of the week before; an idle one.
  add(midnight - 1800, midnight + 1800, "A");
  add(midnight + 2000, midnight + 2600, "Inactif", true);
  const double sunday = paris.startOf({2023, 11, 19});
  add(sunday + 9 * 3600, sunday + 9 * 3600 + 600, "A");
  add(sunday + 14 * 3600, sunday + 14 * 3600 + 600, "A");
  add(midnight - 7 * 86400, midnight - 7 * 86400 + 60, "A");

  for (const auto* date : {"2023-11-13", "2023-11-15", "2023-11-19"}) {
    const auto week = analytics.week(date);
    EXPECT_EQ(week.at("monday"), "2023-11-13");
    const auto& days = week.at("days").as_array();
    ASSERT_EQ(days.size(), 7U);
    EXPECT_EQ(days[1].at("active"), 1800.0);
    EXPECT_EQ(days[1].at("last"), midnight);
    EXPECT_EQ(days[2].at("active"), 1800.0);
    EXPECT_EQ(days[2].at("by_category").at("inactif"), 600.0);
    EXPECT_TRUE(days[0].at("first").is_null());
    EXPECT_EQ(days[6].at("first"), sunday + 9 * 3600);
    EXPECT_EQ(week.at("by_category").at("nonclasse"), 4800.0);
  }
  const auto recap = analytics.recap("2023-11-19");
  const auto& current = recap.at("current").as_object();
  EXPECT_EQ(current.at("active"), 4800.0);
  EXPECT_EQ(current.at("days_active"), 2);
  EXPECT_EQ(current.at("avg_per_day"), 2400.0);
  EXPECT_EQ(current.at("longest_session"), 5 * 3600 + 600.0);  // nothing known is not idle
  EXPECT_EQ(current.at("best_day"), json::value({{"date", "2023-11-14"}, {"active", 3600.0}}));
  EXPECT_EQ(recap.at("previous").at("active"), 60.0);
  const auto quiet = analytics.recap("2024-06-01");
  const auto& empty = quiet.at("current").as_object();
  EXPECT_EQ(json::serialize(empty.at("avg_per_day")), "0");
  EXPECT_EQ(empty.at("days_active"), 0);
  EXPECT_TRUE(empty.at("best_day").is_null());
}

TEST_F(AnalyticsTest, ReportsAreAskedByName) {
  const Router router(analytics);
  const auto call = [&](std::vector<std::string> words) {
    const auto result = callRoute(router, words);
    return std::pair(result.status, json::parse(result.output));
  };
  EXPECT_EQ(call({"day"}).second.at("date"), "2023-11-14");
  EXPECT_EQ(call({"day", R"({"date": "2023-11-15"})"}).second.at("date"), "2023-11-15");
  EXPECT_EQ(call({"day", R"({"date": ""})"}).first, 0);
  EXPECT_EQ(call({"week"}).second.at("monday"), "2023-11-13");
  EXPECT_EQ(call({"recap"}).second.at("monday"), "2023-11-13");
  EXPECT_EQ(call({"day", R"({"date": 20231115})"}).second.at("date"), "2023-11-14");
  EXPECT_EQ(call({"Day"}), std::pair(1, json::value({{"error", "route inconnue : Day"}})));
  const auto broken = json::value({{"error", "arguments illisibles : ce n'est pas du JSON"}});
  for (const auto* text : {"", "{", "{\"date\": \"\xff\"}", "{} {}"}) {
    EXPECT_EQ(call({"day", text}), std::pair(1, broken)) << text;
  }
  EXPECT_EQ(call({"day", std::string(100000, '[')}).first, 1);
  EXPECT_EQ(call({"day", "[]"}).first, 1);
  EXPECT_EQ(call({}).first, 1);
}

}  // namespace
}  // namespace orvanta
