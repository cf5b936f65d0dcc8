// What several ranges of time cover, and what they leave.
#pragma once

#include <algorithm>
#include <vector>

#include "base/calendar.h"

namespace orvanta {

inline double length(const TimeRange& range) {
  return range.end - range.start;
}

/// What both cover; of no or a negative length when that is nothing.
inline TimeRange common(const TimeRange& a, const TimeRange& b) {
  return {std::max(a.start, b.start), std::min(a.end, b.end)};
}

/// Sorted, without what is empty, those that meet made one.
std::vector<TimeRange> joined(std::vector<TimeRange> ranges);

/// Of `range`, what no range of `taken` covers. These are joined().
std::vector<TimeRange> without(const TimeRange& range, const std::vector<TimeRange>& taken);

}  // namespace orvanta
