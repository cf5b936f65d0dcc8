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

void eachSpan(Database& db, const TimeRange& range, StringPool& pool, const Projects& projects,
              const std::function<void(const Ev&)>& visit) {
  const auto rules = loadRules(db);
  EvReader reader(pool);
  Classifier classifier(pool, rules, projects);
  const auto take = [&](const Cursor& row) {
    auto ev = reader.read(row);
    if (ev.start <= range.start) ev.start = range.start;
    if (ev.end > range.end) ev.end = range.end;
    classifier.classify(ev);
    visit(ev);
  };
  const Args bounds{range.start, range.end, range.start - kLongSpan};
  db.each(kLongBefore, bounds, take);
  db.each(kFromShortlyBefore, bounds, take);
}

Spans loadSpans(Database& db, const TimeRange& range) {
  Spans spans;
  spans.projects = loadProjects(db);
  eachSpan(db, range, *spans.pool, spans.projects, [&](const Ev& ev) { spans.list.push_back(ev); });
  return spans;
}

}  // namespace orvanta
