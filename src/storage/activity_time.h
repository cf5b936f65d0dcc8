// What spans of one activity add up to.
#pragma once

#include <cstdint>

#include "base/calendar.h"
#include "storage/ev.h"

namespace orvanta {

/// Some spans of one activity that start in one month.
struct ActivityTime {
  int month = 0;       ///< year * 12 + month - 1 of the span's start, local
  double seconds = 0;  ///< that they last
  int64_t spans = 0;
  double first = 0;     ///< start of the first of them, Unix seconds
  int64_t example = 0;  ///< id of that one
};

/// By which activities are told apart while the program runs, as StringPool::hashOf() does texts.
uint64_t hashOfActivity(const Ev& ev);

/// Finds the local month of instants (Unix seconds), quickly where they come in the order of time.
class Months {
 public:
  explicit Months(const Calendar& calendar) : calendar_(calendar.pinned()) {}
  int of(double instant);

 private:
  const Calendar calendar_;
  TimeRange range_;  // of the month asked for last
  int month_ = 0;
};

}  // namespace orvanta
