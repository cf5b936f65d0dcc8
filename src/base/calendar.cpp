#include "base/calendar.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <regex>

namespace orvanta {
namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t kSecondsPerDay = 86400;

int64_t dayNumber(const Date& date) {
  const year_month_day civil(year(date.year), month(static_cast<unsigned>(date.month)),
                             day(static_cast<unsigned>(date.day)));
  return sys_days(civil).time_since_epoch().count();
}

Date dateOfDayNumber(int64_t number) {
  const year_month_day civil{sys_days(days(number))};
  return {static_cast<int>(civil.year()), static_cast<int>(static_cast<unsigned>(civil.month())),
          static_cast<int>(static_cast<unsigned>(civil.day()))};
}

// The instant at which the zone's wall clock, under one reading of ambiguous times, shows
// `localSeconds` (seconds of a clock without zone); the end of the gap when it never does.
int64_t instantOf(const Glib::TimeZone& zone, int64_t localSeconds, GTimeType reading) {
  gint64 adjusted = localSeconds;
  // const_cast: GLib takes a mutable zone but only reads it.
  auto* raw = const_cast<GTimeZone*>(zone.gobj());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  const int interval = g_time_zone_adjust_time(raw, reading, &adjusted);
  return adjusted - g_time_zone_get_offset(raw, interval);
}

}  // namespace

Date Date::plusDays(int count) const {
  return dateOfDayNumber(dayNumber(*this) + count);
}

int Date::daysUntil(const Date& other) const {
  return static_cast<int>(dayNumber(other) - dayNumber(*this));
}

Date Date::monday() const {
  const std::chrono::weekday weekday{sys_days(days(dayNumber(*this)))};
  return plusDays(1 - static_cast<int>(weekday.iso_encoding()));
}

std::string Date::iso() const {
  return fmt::format("{:04}-{:02}-{:02}", year, month, day);
}

std::optional<Date> Date::parse(const std::string& text) {
  static const std::regex form("([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) return {};
  const Date date{std::stoi(parts[1]), std::stoi(parts[2]), std::stoi(parts[3])};
  const bool exists = year_month_day(std::chrono::year(date.year),
                                     std::chrono::month(static_cast<unsigned>(date.month)),
                                     std::chrono::day(static_cast<unsigned>(date.day)))
                          .ok();
  return exists ? std::optional(date) : std::nullopt;
}

Glib::TimeZone Calendar::zone() const {
  return fixed_ ? *fixed_ : Glib::TimeZone::create_local();
}

int64_t Calendar::wallSeconds(double instant) const {
  constexpr double kFarthest = 9e11;
  const double counted = !(instant > -kFarthest) ? -kFarthest : std::min(instant, kFarthest);
  const auto seconds = static_cast<int64_t>(std::floor(counted));
  const auto local = zone();
  auto* raw =
      const_cast<GTimeZone*>(local.gobj());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  const int interval = g_time_zone_find_interval(raw, G_TIME_TYPE_UNIVERSAL, seconds);
  return seconds + g_time_zone_get_offset(raw, interval);
}

std::string Calendar::wallTime(double instant) const {
  constexpr int64_t kMinute = 60;
  const auto seconds = wallSeconds(instant);
  const auto minutes = (seconds - floorDivide(seconds, kSecondsPerDay) * kSecondsPerDay) / kMinute;
  return fmt::format("{:02}:{:02}", minutes / kMinute, minutes % kMinute);
}

Date Calendar::dateOf(double instant) const {
  return dateOfDayNumber(floorDivide(wallSeconds(instant), kSecondsPerDay));
}

double Calendar::startOf(const Date& date) const {
  const auto local = zone();
  const int64_t midnight = dayNumber(date) * kSecondsPerDay;
  return static_cast<double>(std::min(instantOf(local, midnight, G_TIME_TYPE_DAYLIGHT),
                                      instantOf(local, midnight, G_TIME_TYPE_STANDARD)));
}

TimeRange Calendar::dayBounds(const Date& date) const {
  return {startOf(date), startOf(date.plusDays(1))};
}

}  // namespace orvanta
