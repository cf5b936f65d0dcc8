#include "reports/date_range.h"

#include <algorithm>
#include <chrono>
#include <regex>
#include <string>

namespace orvanta {
namespace {

constexpr int kDaysPerWeek = 7;
constexpr int kMonthsPerYear = 12;
constexpr int kMonthsPerQuarter = 3;

int lastDayOf(int year, int month) {
  using namespace std::chrono;
  const year_month_day_last last{std::chrono::year(year) /
                                 std::chrono::month(static_cast<unsigned>(month)) /
                                 std::chrono::last};
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

// The first day of the month that lies `months` after the date's.
Date monthStart(const Date& date, int months) {
  const auto number = int64_t{date.year} * kMonthsPerYear + date.month - 1 + months;
  const auto year = floorDivide(number, kMonthsPerYear);
  return {static_cast<int>(year), static_cast<int>(number - year * kMonthsPerYear) + 1, 1};
}

DateRange monthsFrom(const Date& first, int months) {
  return {first, monthStart(first, months).plusDays(-1)};
}

// How many months a range of whole months is; 0 for what is no month, quarter or year.
int monthsIn(PeriodKind kind) {
  switch (kind) {
    case PeriodKind::Month:
      return 1;
    case PeriodKind::Quarter:
      return kMonthsPerQuarter;
    case PeriodKind::Year:
      return kMonthsPerYear;
    default:
      return 0;
  }
}

std::optional<DateRange> isoWeek(int year, int week) {
  constexpr int kInFirstWeek = 4;  // of January
  constexpr int kThursday = 3;
  const auto monday = Date{year, 1, kInFirstWeek}.monday().plusDays((week - 1) * kDaysPerWeek);
  if (week < 1 || monday.plusDays(kThursday).year != year) return {};
  return weekOf(monday);
}

}  // namespace

PeriodKind kindOf(const DateRange& range) {
  const auto& [from, to] = range;
  if (from == to) return PeriodKind::Day;
  if (range == weekOf(from)) return PeriodKind::Week;
  if (from.day != 1) return PeriodKind::Other;
  if (range == monthsFrom(from, 1)) return PeriodKind::Month;
  const bool quarter = (from.month - 1) % kMonthsPerQuarter == 0;
  if (quarter && range == monthsFrom(from, kMonthsPerQuarter)) return PeriodKind::Quarter;
  const bool year = from.month == 1 && range == monthsFrom(from, kMonthsPerYear);
  return year ? PeriodKind::Year : PeriodKind::Other;
}

std::optional<DateRange> parsePeriod(std::string_view text) {
  static const std::regex kForm("([0-9]{4})(?:-([0-9]{1,2})|-[WS]([0-9]{1,2})|-[TQ]([1-4]))?");
  const std::string all(text);
  if (const auto dots = all.find(".."); dots != std::string::npos) {
    const auto from = Date::parse(all.substr(0, dots));
    const auto to = Date::parse(all.substr(dots + 2));
    if (!from || !to || *to < *from) return {};
    return DateRange{*from, *to};
  }
  if (const auto day = Date::parse(all)) return DateRange{*day, *day};
  std::smatch parts;
  if (!std::regex_match(all, parts, kForm)) return {};
  const int year = std::stoi(parts[1]);
  if (year < 1) return {};
  if (parts[3].matched) return isoWeek(year, std::stoi(parts[3]));
  if (parts[4].matched) {
    const int month = (std::stoi(parts[4]) - 1) * kMonthsPerQuarter + 1;
    return monthsFrom({year, month, 1}, kMonthsPerQuarter);
  }
  if (!parts[2].matched) return monthsFrom({year, 1, 1}, kMonthsPerYear);
  const int month = std::stoi(parts[2]);
  if (month < 1 || month > kMonthsPerYear) return {};
  return monthsFrom({year, month, 1}, 1);
}

DateRange weekOf(const Date& date) {
  return {date.monday(), date.monday().plusDays(kDaysPerWeek - 1)};
}

DateRange monthOf(const Date& date) {
  return monthsFrom({date.year, date.month, 1}, 1);
}

DateRange rangeBefore(const DateRange& range) {
  if (const int months = monthsIn(kindOf(range)); months > 0) {
    return monthsFrom(monthStart(range.from, -months), months);
  }
  return {range.from.plusDays(-range.days()), range.from.plusDays(-1)};
}

double samePointBefore(const Calendar& calendar, const DateRange& range, double now) {
  constexpr int64_t kDay = 86400;
  const auto today = calendar.dateOf(now);
  Date then;
  if (const int months = monthsIn(kindOf(range)); months > 0) {
    then = monthStart(today, -months);
    if (today.day > lastDayOf(then.year, then.month)) {
      return calendar.startOf(monthStart(then, 1));
    }
    then.day = today.day;
  } else {
    then = today.plusDays(-range.days());
  }
  const auto wall = calendar.wallSeconds(now);
  const auto wanted = Date{}.daysUntil(then) * kDay + (wall - floorDivide(wall, kDay) * kDay);
  auto instant =
      calendar.startOf(then) + static_cast<double>(wall - floorDivide(wall, kDay) * kDay);
  // Where the clock was changed between midnight and then.
  instant += static_cast<double>(wanted - calendar.wallSeconds(instant));
  const auto day = calendar.dayBounds(then);
  return std::clamp(instant, day.start, day.end);
}

}  // namespace orvanta
