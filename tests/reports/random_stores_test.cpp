#include "bridge/report_json.h"
#include "reports/analytics.h"
#include "reports/spans.h"
#include "support/naive_reports.h"
#include "support/random_places.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

void expectSame(const json::object& actual, const json::object& expected) {
  EXPECT_EQ(actual.size(), expected.size());
  for (const auto& [key, value] : expected) EXPECT_EQ(actual.at(key), value) << key;
}

struct RandomStores : RandomPlaces {
  template <class Compare>
  void forEachSeed(unsigned count, const Compare& compare) {
    RandomPlaces::forEachSeed(count, [&](Dice& dice, const Calendar& calendar, int day) {
      compare(dice, Analytics(store.db, clock.read(), calendar), day);
    });
  }
};

TEST_F(RandomStores, GiveTheSameDayAsTheNaiveReport) {
  const char* shortestBlocks[] = {"60", "60", "0", "12.5", "-1", "", "soixante"};
  forEachSeed(times(2000U), [&](Dice& dice, const Analytics& analytics, int day) {
    const auto midnights = edges(day, day + 1);
    fillAtRandom(store.db, dice, midnights[0] - 30000 + dice.upTo(100000), 300, midnights);
    store.db.setSetting("min_block_seconds", dice.oneOf(shortestBlocks));
    for (const int asked : {day, day + 1}) {
      clock.now = naiveStart(asked) + dice.upTo(80000);
      const auto date = dice.oneIn(10) ? analytics.today() : *Date::parse(naiveIso(asked));
      const auto expected = naiveDayReport(store.db, asked);
      expectSame(json::value_from(analytics.day(date)).as_object(), expected);
      const auto totals = analytics.totals(date);
      EXPECT_EQ(json::value_from(totals.totals), expected.at("totals"));
      EXPECT_EQ(json::value_from(totals.projects), expected.at("projects"));
    }
  });
}

TEST_F(RandomStores, GiveTheSameWeekAndRecapAsTheNaiveReports) {
  forEachSeed(times(2000U), [&](Dice& dice, const Analytics& analytics, int day) {
    const int monday = naiveMonday(day);
    fillAtRandom(store.db, dice, naiveStart(monday - 9) + dice.upTo(900000), 90000,
                 edges(monday - 7, monday + 7));
    const int asked = monday + dice.upTo(6);
    clock.now = naiveStart(asked) + dice.upTo(80000);
    const auto date = dice.oneIn(10) ? analytics.today() : *Date::parse(naiveIso(asked));
    expectSame(json::value_from(analytics.week(date)).as_object(),
               naiveWeekReport(store.db, asked));
    const auto recap = json::value_from(analytics.recap(date));
    const auto expected = naiveRecapReport(store.db, asked);
    EXPECT_EQ(recap.at("monday"), expected.at("monday"));
    for (const auto* week : {"current", "previous"}) {
      expectSame(recap.at(week).as_object(), expected.at(week).as_object());
    }
  });
}

// Spans of all lengths, from negative to a year, around the length from which they count as long.
TEST_F(RandomStores, OfAllLengthsAreReadAsTheWholeTableHoldsThem) {
  Dice dice(5);
  store.db.exec("BEGIN");
  for (int i = 0; i < 3000; ++i) {
    const double start = dice.upTo(3'000'000) * 0.1;
    const double lengths[] = {dice.upTo(50) - 10.0, 13990.0 + dice.upTo(20),
                              14390.0 + dice.upTo(20), dice.upTo(60000) * 1.0,
                              dice.oneIn(10) ? 3e7 : 5.0};
    store.db.run("INSERT INTO events(start,end,app) VALUES (?,?,'A')",
                 {start, start + dice.oneOf(lengths)});
  }
  store.db.exec("COMMIT");
  for (int i = 0; i < 400; ++i) {
    const double from = dice.upTo(3'200'000) * 0.1 - 1e4;
    const double to = from + dice.upTo(100000);
    std::vector<std::pair<double, int64_t>> expected;
    for (const auto& row : store.db.query(
             "SELECT id, start FROM events WHERE end > ? AND start < ? ORDER BY start, id",
             {from, to})) {
      expected.emplace_back(std::max(row.dbl("start"), from), *row.int_("id"));
    }
    std::vector<std::pair<double, int64_t>> found;
    SpanReader(store.db).each({from, to},
                              [&](const Ev& ev) { found.emplace_back(ev.start, ev.id); });
    ASSERT_EQ(found, expected) << from << " " << to;
  }
}

}  // namespace
}  // namespace orvanta::test
