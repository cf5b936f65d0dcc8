#include "base/time_ranges.h"

namespace orvanta {

std::vector<TimeRange> joined(std::vector<TimeRange> ranges) {
  std::erase_if(ranges, [](const TimeRange& range) { return !(range.start < range.end); });
  std::sort(ranges.begin(), ranges.end(),
            [](const auto& a, const auto& b) { return a.start < b.start; });
  std::vector<TimeRange> list;
  for (const auto& range : ranges) {
    if (list.empty() || list.back().end < range.start) {
      list.push_back(range);
    } else {
      list.back().end = std::max(list.back().end, range.end);
    }
  }
  return list;
}

std::vector<TimeRange> without(const TimeRange& range, const std::vector<TimeRange>& taken) {
  std::vector<TimeRange> left;
  double from = range.start;
  auto time = std::partition_point(taken.begin(), taken.end(),
                                   [&](const auto& each) { return each.end <= range.start; });
  for (; time != taken.end() && time->start < range.end; ++time) {
    if (time->start > from) left.push_back({from, time->start});
    from = time->end;
  }
  if (from < range.end) left.push_back({from, range.end});
  return left;
}

}  // namespace orvanta
