#include <gtest/gtest.h>

#include "bridge/report_json.h"
#include "reports/analytics.h"
#include "support/fake_desktop.h"
#include "support/naive_reports.h"
#include "support/random_store.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

namespace json = boost::json;
using test::Dice;

struct Place {
  const char* zone;
  std::vector<const char*> dates;  // the clock is changed on most of them
};
const std::vector<Place> kPlaces{
    {"Europe/Paris", {"2024-03-31", "2024-10-27", "2024-12-31", "2024-07-14"}},
    {"America/New_York", {"2024-03-10", "2024-11-03", "2024-02-29"}},
    {"America/Santiago", {"2024-04-06", "2024-09-08", "2023-12-31"}},  // midnight is skipped
    {"Africa/Cairo", {"2024-04-26", "2024-10-31"}},                    // and here
};

void expectSame(const json::object& actual, const json::object& expected) {
  EXPECT_EQ(actual.size(), expected.size());
  for (const auto& [key, value] : expected) EXPECT_EQ(actual.at(key), value) << key;
}

// Each seed is a store of its own in one file.
class RandomStores : public testing::Test {
 protected:
  template <class Compare>
  void forEachSeed(unsigned count, const Compare& compare) {
    for (unsigned seed = 0; seed < count && !HasFailure(); ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Dice dice(seed);
      const auto& place = dice.oneOf(kPlaces);
      const test::LocalZone local(place.zone);
      const Analytics analytics(store.db, clock.read(),
                                Calendar(Glib::TimeZone::create(place.zone)));
      compare(dice, analytics, test::naiveDay(dice.oneOf(place.dates)));
    }
  }
  // Midnights around a day.
  static std::vector<double> edges(int firstDay, int lastDay) {
    std::vector<double> list;
    for (int day = firstDay; day <= lastDay; ++day) list.push_back(test::naiveStart(day));
    return list;
  }

  test::TempStore store;
  test::FakeClock clock;
};

TEST_F(RandomStores, GiveTheSameDayAsTheNaiveReport) {
  const char* shortestBlocks[] = {"60", "60", "0", "12.5", "-1", "", "soixante"};
  forEachSeed(2000, [&](Dice& dice, const Analytics& analytics, int day) {
    const auto midnights = edges(day, day + 1);
    test::fillAtRandom(store.db, dice, midnights[0] - 30000 + dice.upTo(100000), 300, midnights);
    store.db.setSetting("min_block_seconds", dice.oneOf(shortestBlocks));
    for (const int asked : {day, day + 1}) {
      clock.now = test::naiveStart(asked) + dice.upTo(80000);
      const auto date = dice.oneIn(10) ? analytics.today() : *Date::parse(test::naiveIso(asked));
      expectSame(json::value_from(analytics.day(date)).as_object(),
                 test::naiveDayReport(store.db, asked));
    }
  });
}

TEST_F(RandomStores, GiveTheSameWeekAndRecapAsTheNaiveReports) {
  forEachSeed(2000, [&](Dice& dice, const Analytics& analytics, int day) {
    const int monday = test::naiveMonday(day);
    test::fillAtRandom(store.db, dice, test::naiveStart(monday - 9) + dice.upTo(900000), 90000,
                       edges(monday - 7, monday + 7));
    const int asked = monday + dice.upTo(6);
    clock.now = test::naiveStart(asked) + dice.upTo(80000);
    const auto date = dice.oneIn(10) ? analytics.today() : *Date::parse(test::naiveIso(asked));
    expectSame(json::value_from(analytics.week(date)).as_object(),
               test::naiveWeekReport(store.db, asked));
    const auto recap = json::value_from(analytics.recap(date));
    const auto expected = test::naiveRecapReport(store.db, asked);
    EXPECT_EQ(recap.at("monday"), expected.at("monday"));
    for (const auto* week : {"current", "previous"}) {
      expectSame(recap.at(week).as_object(), expected.at(week).as_object());
    }
  });
}

}  // namespace
}  // namespace orvanta
