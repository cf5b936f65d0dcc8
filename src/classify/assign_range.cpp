#include "classify/assign_range.h"

#include <cmath>
#include <vector>

#include "storage/overlap.h"

namespace orvanta {
namespace {

// What a page or a script says of an instant may have lost its last digits on the way.
constexpr double kSameInstant = 0.001;

struct Span {
  int64_t id;
  double start;
  double end;
};

std::vector<Span> overlapping(Transaction& change, const TimeRange& range) {
  static const OverlapQuery kQuery("id, start, end", "AND idle=0");
  std::vector<Span> found;
  const auto take = [&](const Cursor& row) {
    found.push_back({row.int_(0).value_or(0), row.dbl(1), row.dbl(2)});
  };
  change.each(kQuery.longBefore, OverlapQuery::args(range), take);
  change.each(kQuery.fromShortlyBefore, OverlapQuery::args(range), take);
  return found;
}

bool same(double a, double b) {
  return std::abs(a - b) < kSameInstant;
}

// A copy of the span that lasts from `start` to `end`.
void copySpan(Transaction& change, int64_t id, double start, double end) {
  change.run(
      "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
      "SELECT ?,?,app,bundle,title,url,domain,0,category,project_id FROM events WHERE id=?",
      {start, end, id});
}

}  // namespace

AssignedTime assignRange(Transaction& change, TimeRange range,
                         const std::optional<std::string>& category,
                         std::optional<int64_t> projectId) {
  AssignedTime assigned;
  if (!(range.start < range.end)) return assigned;
  for (const auto& [id, start, end] : overlapping(change, range)) {
    // One that ends with the range's beginning, or begins with its end, is not in it.
    if (same(end, range.start) || same(start, range.end)) continue;
    double from = start;
    double to = end;
    if (start < range.start && !same(start, range.start)) {
      copySpan(change, id, start, range.start);
      change.run("UPDATE events SET start=? WHERE id=?", {range.start, id});
      from = range.start;
    }
    if (end > range.end && !same(end, range.end)) {
      copySpan(change, id, range.end, end);
      change.run("UPDATE events SET end=? WHERE id=?", {range.end, id});
      to = range.end;
    }
    change.run("UPDATE events SET category=?, project_id=? WHERE id=?", {category, projectId, id});
    ++assigned.spans;
    assigned.seconds += to > from ? to - from : 0;
  }
  // Those that last no time and touch the range.
  change.run(
      "UPDATE events SET category=?, project_id=? "
      "WHERE start >= ?3 AND start < ?4 AND end <= start AND idle=0",
      {category, projectId, range.start, range.end});
  return assigned;
}

}  // namespace orvanta
