// Spans cut at local midnights.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "base/calendar.h"
#include "reports/date_range.h"
#include "reports/spans.h"
#include "storage/ev.h"

namespace orvanta {

/// The days of a range, each with the bounds that its own report has.
class LocalDays {
 public:
  LocalDays(const Calendar& calendar, const DateRange& dates) : dates_(dates) {
    const auto pinned = calendar.pinned();
    const int days = dates.days();
    starts_.reserve(static_cast<std::size_t>(days) + 1);
    for (int i = 0; i <= days; ++i) starts_.push_back(pinned.startOf(dates.from.plusDays(i)));
  }

  std::size_t size() const { return starts_.size() - 1; }
  Date date(std::size_t day) const { return dates_.from.plusDays(static_cast<int>(day)); }
  TimeRange bounds(std::size_t day) const { return {starts_[day], starts_[day + 1]}; }
  TimeRange range() const { return {starts_.front(), starts_.back()}; }

  /// Shows the part that a span has in each day, as visit(day, part). A span that only touches a
  /// day has none there. Quick for spans that come by time.
  template <class Visit>
  void split(const Ev& ev, const Visit& visit) {
    if (!(ev.start >= starts_[last_] && ev.start < starts_[last_ + 1])) last_ = dayOf(ev.start);
    if (ev.end <= starts_[last_ + 1]) {
      if (overlaps(ev, bounds(last_))) visit(last_, ev);
      return;
    }
    for (auto day = last_; day < size() && starts_[day] < ev.end; ++day) {
      if (overlaps(ev, bounds(day))) visit(day, clipped(ev, bounds(day)));
    }
  }

 private:
  std::size_t dayOf(double instant) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), instant);
    const auto day = after == starts_.begin() ? 0 : after - starts_.begin() - 1;
    return std::min(static_cast<std::size_t>(day), size() - 1);
  }

  const DateRange dates_;
  std::vector<double> starts_;  // and the end of the last
  std::size_t last_ = 0;
};

}  // namespace orvanta
