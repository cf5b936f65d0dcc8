// Time by the hour that the wall clock shows.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "base/calendar.h"

namespace orvanta {

/// Seconds by weekday, Monday first, and hour of the day.
using HeatMap = std::array<std::array<double, 24>, 7>;

/// Sums time up by wall hours. On a day on which the clock is set back an hour is counted twice, on
/// one on which it is put forward one stays empty.
class WallHours {
 public:
  explicit WallHours(const Calendar& calendar) : calendar_(calendar.pinned()) {}

  /// Counts in what lies between two instants of one local day, whose bounds these are. Asks the
  /// calendar once a day, where days come in order.
  void add(const TimeRange& day, double start, double end);

  const HeatMap& sums() const { return sums_; }

 private:
  struct Slot {
    double end = 0;
    std::size_t hour = 0;
  };
  void enter(const TimeRange& day);

  const Calendar calendar_;
  HeatMap sums_{};
  TimeRange day_;
  std::size_t weekday_ = 0;
  std::vector<Slot> slots_;  // of the day, one after the other
  std::size_t slot_ = 0;     // that of the last span
  double slotStart_ = 0;
};

}  // namespace orvanta
