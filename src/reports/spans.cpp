#include "reports/spans.h"

#include "classify/classifier.h"
#include "storage/schema.h"

namespace orvanta {
namespace {

// Asked plainly ("end > ? AND start < ?"), SQLite walks the history from its first row or to its
// last. So the spans are looked for in two places, each a short walk along an index: the few long
// ones that began well before the range, and all that began shortly before it or in it. The unary
// plus keeps the planner off the other indexes. Together they are all: a span that began more than
// kLongSpan before the range and reaches into it is a long one.
constexpr auto kLongBefore =
    "SELECT * FROM events INDEXED BY idx_events_long "
    "WHERE end - start > 14000 AND end > ?1 AND +start < ?2 AND +start < ?3 ORDER BY start, id";
constexpr auto kFromShortlyBefore =
    "SELECT * FROM events WHERE +end > ?1 AND start < ?2 AND start >= ?3 ORDER BY start";

}  // namespace

Spans loadSpans(Database& db, const TimeRange& range) {
  Spans spans;
  const auto rules = loadRules(db);
  spans.projects = loadProjects(db);
  EvReader reader(*spans.pool);
  Classifier classifier(*spans.pool, rules, spans.projects);
  const auto take = [&](const Cursor& row) {
    auto& ev = spans.list.emplace_back(reader.read(row));
    if (ev.start <= range.start) ev.start = range.start;
    if (ev.end > range.end) ev.end = range.end;
    classifier.classify(ev);
  };
  const Args bounds{range.start, range.end, range.start - kLongSpan};
  db.each(kLongBefore, bounds, take);
  db.each(kFromShortlyBefore, bounds, take);
  return spans;
}

}  // namespace orvanta
