// Many ranges of time at once, as statements that erase them see them.
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "base/calendar.h"

namespace orvanta {

/// Ends that differ by less count as equal, so that no slivers are left.
inline constexpr double kSameInstant = 0.001;  // seconds

/// The ranges as the first argument of the function below. One that lasts no time stands for what
/// lasts none there.
std::string timesText(const std::vector<TimeRange>& ranges);

/// Gives the connection the function rest_of(times, start, end) of SQL: NULL where a span has no
/// part in the times, else what of it lies outside, a JSON list of [start, end].
void addRestOf(sqlite3* connection);

}  // namespace orvanta
