#include "classify/assign_range.h"

#include <vector>

#include "storage/overlap.h"

namespace orvanta {
namespace {

struct Crossing {
  int64_t id;
  double start;
  double end;
};

std::vector<Crossing> crossing(Database& db, const TimeRange& range) {
  static const OverlapQuery kQuery("id, start, end", "AND idle=0");
  std::vector<Crossing> found;
  const auto take = [&](const Cursor& row) {
    const Crossing span{row.int_(0).value_or(0), row.dbl(1), row.dbl(2)};
    if (span.start < range.start || span.end > range.end) found.push_back(span);
  };
  db.each(kQuery.longBefore, OverlapQuery::args(range), take);
  db.each(kQuery.fromShortlyBefore, OverlapQuery::args(range), take);
  return found;
}

// A copy of the span that lasts from `start` to `end`. False when it could not be stored.
bool copySpan(Database& db, int64_t id, double start, double end) {
  return db.run(
             "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
             "SELECT ?,?,app,bundle,title,url,domain,0,category,project_id FROM events WHERE id=?",
             {start, end, id}) >= 0;
}

}  // namespace

void assignRange(Database& db, const TimeRange& range, const std::optional<std::string>& category,
                 std::optional<int64_t> projectId) {
  if (!(range.start < range.end)) return;
  for (const auto& span : crossing(db, range)) {
    // First the copy, then the cut: what is lost is gone.
    if (span.start < range.start && copySpan(db, span.id, span.start, range.start)) {
      db.run("UPDATE events SET start=? WHERE id=?", {range.start, span.id});
    }
    if (span.end > range.end && copySpan(db, span.id, range.end, span.end)) {
      db.run("UPDATE events SET end=? WHERE id=?", {range.end, span.id});
    }
  }
  // The upper bound on the start is for the index; it leaves out what has just begun there.
  db.run(
      "UPDATE events SET category=?, project_id=? "
      "WHERE start >= ?3 AND start < ?4 AND +end <= ?4 AND idle=0",
      {category, projectId, range.start, range.end});
}

}  // namespace orvanta
