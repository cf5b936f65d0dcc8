// On which days an event of a calendar file comes again.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "base/calendar.h"

namespace orvanta {

/// The rules that calendars write for what happens at a desk: every so many days, weeks or months,
/// in a week on some days of it, until a day or so many times.
struct Recurrence {
  enum class Every { Day, Week, Month };

  Every every = Every::Day;
  int interval = 1;
  std::optional<std::size_t> count;
  std::string_view until;      ///< as it is written; "" for none
  std::array<bool, 7> days{};  ///< from Monday on; none: that of the first day
  bool weekFromSunday = false;

  /// `rule` outlives it. Absent for one that says more than this, or nothing that can be meant.
  static std::optional<Recurrence> parse(std::string_view rule, const Date& first);

  /// Shows the days up to `last` in their order, `first` always, until `visit` says that it is
  /// enough. Counts nothing and knows no `until`. Each day, week or month that is looked at costs
  /// one of `looks`; it ends with the last of them.
  void each(const Date& first, const Date& last, std::size_t& looks,
            const std::function<bool(const Date&)>& visit) const;

 private:
  Date weekOf(const Date& date) const;
};

}  // namespace orvanta
