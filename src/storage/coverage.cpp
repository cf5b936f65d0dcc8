#include "storage/coverage.h"

#include <algorithm>

namespace orvanta {

void Coverage::add(double start, double end) {
  if (!(start < end)) return;
  if (ranges_.empty() || start > ranges_.back().end) {
    ranges_.push_back({start, end});
  } else {
    ranges_.back().end = std::max(ranges_.back().end, end);
  }
}

double Coverage::covered(double start, double end) const {
  double seconds = 0;
  auto range = std::partition_point(ranges_.begin(), ranges_.end(),
                                    [&](const TimeRange& one) { return one.end <= start; });
  for (; range != ranges_.end() && range->start < end; ++range) {
    seconds += std::min(range->end, end) - std::max(range->start, start);
  }
  return seconds;
}

Coverage coverageOf(const FileConnection& store) {
  Coverage coverage;
  store.each("SELECT start, end FROM events ORDER BY start", {},
             [&](const Cursor& row) { coverage.add(row.dbl(0), row.dbl(1)); });
  return coverage;
}

}  // namespace orvanta
