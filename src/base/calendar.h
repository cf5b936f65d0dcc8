// Local calendar days as the user lives them.
#pragma once

#include <glibmm/timezone.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace orvanta {

/// A civil date of the Gregorian calendar.
struct Date {
  int year = 1970;
  int month = 1;
  int day = 1;

  friend bool operator==(const Date&, const Date&) = default;
  /// The earlier date is the smaller one.
  friend auto operator<=>(const Date&, const Date&) = default;

  /// The date `days` later (earlier when negative).
  Date plusDays(int days) const;

  /// How many days later `other` is; negative when it is earlier.
  int daysUntil(const Date& other) const;

  /// The Monday of its week; weeks run from Monday to Sunday.
  Date monday() const;

  /// "yyyy-MM-dd".
  std::string iso() const;

  /// The date that `text` names, in the form "yyyy-MM-dd". Absent when the text has another form or
  /// there is no such date.
  static std::optional<Date> parse(const std::string& text);
};

/// Rounds down, also below zero.
constexpr int64_t floorDivide(int64_t number, int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

/// A half-open range of time, Unix seconds.
struct TimeRange {
  double start = 0;
  double end = 0;
};

/// Turns instants (Unix seconds) into local dates and back. The rules come from the system's time
/// zone files, which are updated more often than those compiled into ICU. May be called from any
/// thread.
class Calendar {
 public:
  /// In the machine's zone, read afresh at every question so that a traveller's change counts.
  Calendar() = default;

  /// In a fixed zone ("Europe/Paris").
  explicit Calendar(const Glib::TimeZone& zone) : fixed_(zone) {}

  /// In the zone as it is now, which is not looked up again: for many questions at a time.
  Calendar pinned() const { return Calendar(zone()); }

  /// The local date of an instant.
  Date dateOf(double instant) const;

  /// What the wall clock shows at an instant, as whole seconds since it showed the start of 1970. A
  /// damaged store may hold any number, and std::chrono counts years up to 32,767: what is further
  /// than some 28,000 years from 1970 counts as that far, what is no number as the earliest. Dates
  /// and times of day go by this.
  int64_t wallSeconds(double instant) const;
  /// The same as "14:03".
  std::string wallTime(double instant) const;

  /// The first instant of a local date: midnight, or, where the clock skips midnight, the instant
  /// of the skip; of a midnight that comes twice, the first.
  double startOf(const Date& date) const;

  /// The local day: from its first instant to the next day's, so that days neither overlap nor
  /// leave gaps. 23, 24 or 25 hours.
  TimeRange dayBounds(const Date& date) const;

 private:
  Glib::TimeZone zone() const;

  std::optional<Glib::TimeZone> fixed_;
};

}  // namespace orvanta
