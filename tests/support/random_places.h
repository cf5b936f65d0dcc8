// Random stores in zones whose clocks are changed.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/calendar.h"
#include "support/fake_desktop.h"
#include "support/naive_calendar.h"
#include "support/random_store.h"

namespace orvanta::test {

struct Place {
  const char* zone;
  std::vector<const char*> dates;  // the clock is changed on most of them
};
inline const std::vector<Place> kPlaces{
    {"Europe/Paris", {"2024-03-31", "2024-10-27", "2024-12-31", "2024-07-14"}},
    {"America/New_York", {"2024-03-10", "2024-11-03", "2024-02-29"}},
    {"America/Santiago", {"2024-04-06", "2024-09-08", "2023-12-31"}},  // midnight is skipped
    {"Africa/Cairo", {"2024-04-26", "2024-10-31"}},                    // and here
};

/// Each seed is a store of its own in one file.
struct RandomPlaces : testing::Test {
  /// Calls `compare` with the dice, the calendar of a place and the number of a day there.
  template <class Compare>
  void forEachSeed(unsigned count, const Compare& compare) {
    for (unsigned seed = 0; seed < count && !HasFailure(); ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Dice dice(seed);
      const auto& place = dice.oneOf(kPlaces);
      const LocalZone local(place.zone);
      compare(dice, Calendar(Glib::TimeZone::create(place.zone)),
              naiveDay(dice.oneOf(place.dates)));
    }
  }
  /// Midnights around a day.
  static std::vector<double> edges(int firstDay, int lastDay) {
    std::vector<double> list;
    for (int day = firstDay; day <= lastDay; ++day) list.push_back(naiveStart(day));
    return list;
  }

  TempStore store;
  FakeClock clock;
};

}  // namespace orvanta::test
