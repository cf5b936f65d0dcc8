#include "base/calendar.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

constexpr double kHour = 3600;

Calendar in(const char* zone) {
  return Calendar(Glib::TimeZone::create(zone));
}

TEST(Calendar, DaysLastWhatTheClockMakesOfThem) {
  const struct {
    const char* zone;
    Date date;
    double hours;
  } cases[] = {
      {"Europe/Paris", {2026, 3, 29}, 23},    {"Europe/Paris", {2026, 10, 25}, 25},
      {"Europe/Paris", {2026, 7, 14}, 24},    {"Africa/Cairo", {2024, 4, 26}, 23},
      {"Africa/Cairo", {2024, 10, 31}, 25},   {"America/Santiago", {2024, 9, 8}, 23},
      {"America/Santiago", {2024, 4, 6}, 25}, {"America/Havana", {2024, 3, 10}, 23},
      {"America/Havana", {2024, 11, 3}, 25},  {"Australia/Lord_Howe", {2024, 10, 6}, 23.5},
      {"Asia/Kathmandu", {2024, 1, 1}, 24},
  };
  for (const auto& [zone, date, hours] : cases) {
    const auto bounds = in(zone).dayBounds(date);
    EXPECT_EQ((bounds.end - bounds.start) / kHour, hours) << zone << " " << date.iso();
  }
}

// Every instant belongs to exactly one day, whatever midnight does.
TEST(Calendar, DaysTouchAndHoldTheirInstants) {
  for (const auto* zone : {"Europe/Paris", "Africa/Cairo", "America/Santiago", "America/Havana",
                           "Pacific/Apia", "Australia/Lord_Howe", "UTC"}) {
    const auto calendar = in(zone);
    Date date{2023, 1, 1};
    for (int day = 0; day < 800; ++day, date = date.plusDays(1)) {
      const auto bounds = calendar.dayBounds(date);
      ASSERT_EQ(bounds.end, calendar.startOf(date.plusDays(1)));
      for (const double instant : {bounds.start, bounds.start + 7 * kHour, bounds.end - 0.001}) {
        ASSERT_EQ(calendar.dateOf(instant).iso(), date.iso()) << zone << " " << instant;
      }
    }
  }
}

TEST(Calendar, DatesBeforeTheEpochAndFractions) {
  EXPECT_EQ(in("UTC").dateOf(-0.5).iso(), "1969-12-31");
  EXPECT_EQ((Date{2024, 2, 28}).plusDays(2).iso(), "2024-03-01");
  EXPECT_EQ((Date{2024, 1, 1}).plusDays(-1).iso(), "2023-12-31");
}

TEST(Calendar, ParsesRealDatesOnly) {
  EXPECT_EQ(Date::parse("2024-02-29"), (Date{2024, 2, 29}));
  for (const auto* text : {"", "2023-02-29", "2024-13-01", "2024-00-10", "2024-01-32", "24-01-01",
                           "2024-01-01T00:00", " 2024-01-01", "2024/01/01", "demain"}) {
    EXPECT_FALSE(Date::parse(text)) << text;
  }
}

}  // namespace
}  // namespace orvanta
