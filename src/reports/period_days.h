// How much of each day went to something: the calendar's tint, the days behind a bar or a row.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reports/date_range.h"

namespace orvanta {

class SpanReader;

/// Which activity is meant; what is absent does not matter.
struct ActivityFilter {
  std::optional<std::string> category;
  std::optional<int64_t> project;
  bool withoutProject = false;
  std::optional<std::string> client;
  std::optional<std::string> app;
  std::optional<std::string> domain;
  std::optional<int> weekday;  ///< 0 is Monday
  std::optional<int> hour;     ///< that the wall clock shows

  /// Nothing that only classification tells.
  bool ofAnyActivity() const {
    return !category && !project && !withoutProject && !client && !app && !domain;
  }
};

struct PeriodDays {
  struct Day {
    Date date;
    double seconds = 0;
    int level = 0;  ///< 1 to 4: in which quarter of the longest day it lies
  };
  DateRange dates;
  std::vector<Day> days;  ///< those with some of it
  double seconds = 0;
  bool whole = true;
};

/// Without a filter no span is classified.
PeriodDays periodDays(SpanReader& reader, const Calendar& calendar, const DateRange& range,
                      const ActivityFilter& filter);

}  // namespace orvanta
