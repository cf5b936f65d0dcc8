// The time of a day in which nothing was recorded, and what it may have been.
#pragma once

#include <vector>

#include "base/calendar.h"
#include "reports/date_range.h"
#include "storage/project.h"

namespace orvanta {

class SpanReader;

/// Between two activities of one day.
struct Gap {
  TimeRange time;
  double idle = 0;              ///< seconds of it that were recorded as an absence
  std::vector<Project> likely;  ///< at most three, the likeliest first
};

struct GapReport {
  struct Day {
    Date date;
    std::vector<Gap> gaps;
  };
  std::vector<Day> days;  ///< those with gaps
  bool whole = true;
};

/// The gaps that last at least so many seconds. `skipped`, which are joined(), are none.
GapReport findGaps(SpanReader& reader, const Calendar& calendar, const DateRange& dates,
                   double least, const std::vector<TimeRange>& skipped);

/// Projects that are not archived, by what was going on in the half-hours before and after, what
/// is usual at this time of that weekday, and what else there was that day.
std::vector<Project> likelyProjects(SpanReader& reader, const Calendar& calendar,
                                    const TimeRange& gap);

}  // namespace orvanta
