#include "imports/import_plan.h"

#include <algorithm>

#include "base/time_ranges.h"
#include "storage/overlap.h"

namespace orvanta {
namespace {

const OverlapQuery& query() {
  static const OverlapQuery kQuery("start, end");
  return kQuery;
}

void add(Occupied& ranges, const Cursor& row) {
  ranges.push_back({row.dbl(0), row.dbl(1)});
}

}  // namespace

std::optional<Occupied> occupiedIn(Database& db, const TimeRange& range) {
  Occupied ranges;
  const auto take = [&](const Cursor& row) { add(ranges, row); };
  const auto args = OverlapQuery::args(range);
  const bool all =
      db.scan(query().longBefore, args, take) && db.scan(query().fromShortlyBefore, args, take);
  return all ? std::optional(joined(std::move(ranges))) : std::nullopt;
}

Occupied occupiedIn(Transaction& change, const TimeRange& range) {
  Occupied ranges;
  const auto take = [&](const Cursor& row) { add(ranges, row); };
  change.each(query().longBefore, OverlapQuery::args(range), take);
  change.each(query().fromShortlyBefore, OverlapQuery::args(range), take);
  return joined(std::move(ranges));
}

ImportPlan planImport(const std::vector<ImportedEvent>& events, const Occupied& occupied,
                      double now) {
  constexpr double kShortest = 1;
  constexpr double kShortestPiece = 60;
  ImportPlan plan;
  auto obstacle = occupied.begin();
  double free = 0;  // up to here events of the file have the time
  for (const auto& event : events) {
    const TimeRange wanted{std::max(event.start, free), std::min(event.end, now)};
    free = std::max(free, wanted.end);
    while (obstacle != occupied.end() && obstacle->end <= wanted.start) ++obstacle;
    auto at = wanted.start;
    for (auto next = obstacle; at < wanted.end; ++next) {
      const bool last = next == occupied.end() || next->start >= wanted.end;
      const double end = last ? wanted.end : next->start;
      const bool whole = at == event.start && end == event.end;
      if (end - at >= (whole ? kShortest : kShortestPiece)) {
        plan.spans.push_back({at, end, &event});
        plan.seconds += end - at;
      }
      if (last) break;
      at = std::max(at, next->end);
    }
  }
  return plan;
}

TimeRange reachOf(const std::vector<ImportedEvent>& events) {
  if (events.empty()) return {};
  TimeRange reach{events.front().start, events.front().end};
  for (const auto& event : events) {
    reach.start = std::min(reach.start, event.start);
    reach.end = std::max(reach.end, event.end);
  }
  return reach;
}

}  // namespace orvanta
