// Ranges of local dates as people name them: a week, a month, a year, any days.
#pragma once

#include <optional>
#include <string_view>

#include "base/calendar.h"
#include "base/enum_text.h"

namespace orvanta {

/// Local dates, both included; `from` is not after `to`.
struct DateRange {
  Date from;
  Date to;

  friend bool operator==(const DateRange&, const DateRange&) = default;
  int days() const { return from.daysUntil(to) + 1; }
  bool holds(const Date& date) const { return from <= date && date <= to; }
  TimeRange bounds(const Calendar& calendar) const {
    return {calendar.startOf(from), calendar.startOf(to.plusDays(1))};
  }
};

/// The longest range that is reported on; a store of ten years fits twice.
inline constexpr int kMostDays = 7320;

enum class PeriodKind { Day, Week, Month, Quarter, Year, Other };
template <>
inline constexpr std::array<std::string_view, 6> kTexts<PeriodKind>{"day",     "week", "month",
                                                                    "quarter", "year", "other"};

/// What these dates are all of.
PeriodKind kindOf(const DateRange& range);

/// "2026", "2026-T4", "2026-10", "2026-W43" or "2026-S43", "2026-10-05", "2026-10-05..2026-10-20".
/// Absent for anything else.
std::optional<DateRange> parsePeriod(std::string_view text);

/// The week of a date, its month, the days that it is one of.
DateRange weekOf(const Date& date);
DateRange monthOf(const Date& date);

/// The one before of the same kind: the month before a month, as many days before any days.
DateRange rangeBefore(const DateRange& range);

/// The instant in rangeBefore(range) that `now` is in `range`: in a week the same weekday and time
/// of day, in a month, a quarter and a year the same day of the month and time. Where that month
/// has no such day, its end. `now` lies in `range`.
double samePointBefore(const Calendar& calendar, const DateRange& range, double now);

}  // namespace orvanta
