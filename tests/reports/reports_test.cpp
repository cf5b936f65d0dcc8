#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "bridge/report_json.h"
#include "reports/agg.h"
#include "reports/analytics.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// The tracker stores none such; whoever does, it is no activity.
TEST(Agg, CountsIdleTimeOfAProjectAsNoActivity) {
  StringPool pool;
  const Ev idle{.end = 600,
                .app = pool.intern("A"),
                .domain = pool.intern("x.fr"),
                .idle = true,
                .cat = pool.intern("travail"),
                .pid = 1};
  EXPECT_EQ(
      json::value_from(totalsOf(aggregate({idle}), {{1, {.id = 1, .name = "Un", .color = "#1"}}})),
      json::parse(R"({"active": 0.0, "by_category": {"travail": 600.0},
                "by_project": [{"id": 1, "name": "Un", "color": "#1", "duration": 600.0}],
                "apps": [], "domains": []})"));
}

class AnalyticsTest : public testing::Test {
 protected:
  test::TempStore store;
  test::FakeClock clock;  // shows 14 November 2023, 23:13 in Paris
  Calendar paris{Glib::TimeZone::create("Europe/Paris")};
  Analytics analytics{store.db, clock.read(), paris};
};

TEST_F(AnalyticsTest, TotalsAreThoseOfTheDay) {
  store.db.run(
      "INSERT INTO events(start,end,app,idle) VALUES (?1-3600,?1+3600,'Nuit',0), "
      "(?1+3600,?1+3700,'Inactif',1)",
      {paris.startOf({2023, 11, 15})});
  store.db.run("INSERT INTO projects(name) VALUES ('A')");
  const auto day = analytics.day({2023, 11, 15});
  const auto totals = analytics.totals({2023, 11, 15});
  EXPECT_EQ(json::value_from(totals.totals), json::value_from(day.totals));
  EXPECT_EQ(json::value_from(totals.projects), json::value_from(day.projects));
}

TEST_F(AnalyticsTest, ASessionLastsToTheEndOfItsLastSpan) {
  store.db.run(
      "INSERT INTO events(start,end,idle) VALUES (?1,?1+5000,0), (?1+1000,?1+1100,0), "
      "(?1+6000,?1+6100,1), (?1+6100,?1+6700,0)",
      {paris.startOf({2023, 11, 15})});
  EXPECT_EQ(analytics.recap({2023, 11, 15}).current.longestSession, 1100.0);
}

}  // namespace
}  // namespace orvanta
