#include "reports/rounding.h"

#include <gtest/gtest.h>

#include <numeric>

#include "reports/french_text.h"
#include "support/random_store.h"

namespace orvanta::test {
namespace {

using Seconds = std::vector<int64_t>;

TEST(RoundingTest, FollowsTheTableWorkedByHand) {
  struct Line {
    int64_t seconds;
    int minutes;
    int64_t nearest, up;
  };
  for (const auto& [seconds, minutes, nearest, up] :
       std::vector<Line>{{0, 5, 0, 0},          {1, 5, 0, 300},           {149, 5, 0, 300},
                         {150, 5, 300, 300},    {300, 5, 300, 300},       {301, 5, 300, 600},
                         {179, 6, 0, 360},      {180, 6, 360, 360},       {3599, 6, 3600, 3600},
                         {299, 10, 0, 600},     {300, 10, 600, 600},      {5999, 10, 6000, 6000},
                         {449, 15, 0, 900},     {450, 15, 900, 900},      {901, 15, 900, 1800},
                         {1349, 15, 900, 1800}, {1350, 15, 1800, 1800},   {28799, 15, 28800, 28800},
                         {899, 30, 0, 1800},    {900, 30, 1800, 1800},    {2700, 30, 3600, 3600},
                         {1234, 0, 1234, 1234}, {86400, 30, 86400, 86400}}) {
    EXPECT_EQ(rounded(seconds, {minutes, RoundingMode::Nearest}), nearest) << seconds;
    EXPECT_EQ(rounded(seconds, {minutes, RoundingMode::Up}), up) << seconds;
  }
  EXPECT_EQ(wholeSeconds(900.0000004), 900) << "what summing up leaves is no second more";
  EXPECT_EQ(wholeSeconds(899.5), 900);
  EXPECT_EQ(amountOf(5400, 8550), 12825);
  EXPECT_EQ(amountOf(60, 8550), 143) << "142.5 cents";
  EXPECT_EQ(amountOf(36, 8549), 85) << "85.49 cents";
}

TEST(RoundingTest, RowsFollowTheTableWorkedByHand) {
  struct Line {
    Seconds days;
    std::vector<std::size_t> columnOf;
    Rounding rounding;
    HourUnit unit;
    Seconds cells;
    int64_t total;
  };
  constexpr auto kTotal = RoundingScope::Total;
  constexpr auto kNearest = RoundingMode::Nearest;
  constexpr auto kClock = HourUnit::Clock;
  constexpr auto kDecimal = HourUnit::Decimal;
  for (const auto& [days, columnOf, rounding, unit, cells, total] : std::vector<Line>{
           // A third of 50 minutes each: 17 + 16 + 17.
           {{1000, 1000, 1000}, {0, 1, 2}, {}, kClock, {1020, 960, 1020}, 3000},
           // Two days of a quarter in the first week; the second week's hundred seconds are none.
           {{450, 450, 100}, {0, 0, 1}, {15}, kClock, {1800, 0}, 1800},
           {{450, 450, 100}, {0, 0, 1}, {15, RoundingMode::Up}, kClock, {1800, 900}, 2700},
           {{500, 500}, {0, 1}, {15, kNearest, kTotal}, kClock, {480, 540}, 900},
           // Three times five minutes are a quarter of an hour: 0.08 + 0.09 + 0.08.
           {{300, 310, 290}, {0, 1, 2}, {5}, kDecimal, {288, 324, 288}, 900},
           {{3000, 0, 600}, {0, 1, 2}, {6}, kDecimal, {2880, 0, 720}, 3600},
           {{1250, 1250}, {0, 1}, {10, kNearest, kTotal}, kDecimal, {1260, 1224}, 2412}}) {
    const auto row = roundRow(days, columnOf, columnOf.back() + 1, rounding, unit);
    EXPECT_EQ(row.cells, cells);
    EXPECT_EQ(row.total, total);
  }
}

// Whatever is asked: what is printed in a row adds up to what is printed at its end.
TEST(RoundingTest, PrintedCellsMakeThePrintedTotal) {
  Dice dice(17);
  for (int i = 0; i < 3000; ++i) {
    Seconds days;
    std::vector<std::size_t> columnOf;
    for (int day = dice.upTo(30); day >= 0; --day) {
      columnOf.push_back(days.size());
      days.push_back(dice.oneIn(3) ? 0 : dice.upTo(30000));
    }
    const int steps[] = {0, 5, 6, 10, 15, 30};
    const Rounding rounding{dice.oneOf(steps), static_cast<RoundingMode>(dice.upTo(1)),
                            RoundingScope::Day};
    const auto unit = static_cast<HourUnit>(dice.upTo(1));
    const auto row = roundRow(days, columnOf, days.size(), rounding, unit);
    int64_t exact = 0;
    for (std::size_t day = 0; day < days.size(); ++day) {
      const auto own = rounded(days[day], rounding);
      exact += own;
      EXPECT_LT(std::abs(row.cells[day] - own), secondsOf(unit));
      EXPECT_EQ(row.cells[day] % secondsOf(unit), 0);
      EXPECT_TRUE(own > 0 || row.cells[day] == 0);
    }
    EXPECT_EQ(row.total, std::accumulate(row.cells.begin(), row.cells.end(), int64_t{0}));
    EXPECT_LE(std::abs(row.total - exact) * 2, secondsOf(unit));
  }
}

TEST(FrenchTextTest, HoursAndMoneyAreShownAsFrenchReadersExpect) {
  EXPECT_EQ(clockHours(93600), "26:00");
  EXPECT_EQ(clockHours(300), "0:05");
  EXPECT_EQ(decimalHours(5400), "1,50");
  EXPECT_EQ(decimalHours(36, '.'), "0.01");
  EXPECT_EQ(moneyText(123456789, "EUR"), "1\u202f234\u202f567,89\u00a0€");
  EXPECT_EQ(moneyText(5, "CHF"), "0,05\u00a0CHF");
  EXPECT_EQ(hoursInWords(3900), "1\u00a0h\u00a005");
  EXPECT_EQ(hoursInWords(3599), "1\u00a0h\u00a000");
}

}  // namespace
}  // namespace orvanta::test
