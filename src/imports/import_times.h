// Times as files of all kinds write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/calendar.h"

namespace orvanta {

/// What a text says of a moment: a local date, a time of day, both, or an instant.
struct WrittenTime {
  std::optional<Date> date;
  std::optional<double> time;     ///< seconds since midnight
  std::optional<double> instant;  ///< Unix seconds; the others are absent then
};

/// "2026-10-25 14:03:09.5", with "T", "Z" or an offset; "25/10/2026 14:03", "25.10.2026", with
/// `monthFirst` "10/25/2026"; "2:03 PM"; Unix seconds or milliseconds. Absent for anything else.
std::optional<WrittenTime> writtenTime(std::string_view text, bool monthFirst);

/// Whether a date such as 10/25/2026 can only be read with the month first.
bool needsMonthFirst(std::string_view text);

/// When the wall clock shows this; in an hour that it skips, as much later.
double instantOf(const Calendar& calendar, const Date& date, double secondsOfDay);

/// "01:02:03", "1:02", "1 h 02", "45 min", "12,5", each in seconds; a bare number counts `unit`.
std::optional<double> writtenDuration(std::string_view text, double unit);

}  // namespace orvanta
