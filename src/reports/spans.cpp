#include "reports/spans.h"

#include "storage/schema.h"

namespace orvanta {
namespace {

// Asked plainly ("end > ? AND start < ?"), SQLite walks the history from its first row or to its
// last. So the spans are looked for in two places, each a short walk along an index: the few long
// ones that began well before the range, and all that began shortly before it or in it. The unary
// plus keeps the planner off the other indexes. Together they are all: a span that began more than
// kLongSpan before the range and reaches into it is a long one.
//
// The bundle is left out: no report asks for it, and every text of a row costs.
#define ORVANTA_COLUMNS "id, start, end, app, title, url, domain, idle, category, project_id"
constexpr auto kLongBefore =
    "SELECT " ORVANTA_COLUMNS
    " FROM events INDEXED BY idx_events_long "
    "WHERE end - start > 14000 AND end > ?1 AND +start < ?2 AND +start < ?3 ORDER BY start, id";
constexpr auto kFromShortlyBefore =
    "SELECT " ORVANTA_COLUMNS
    " FROM events "
    "WHERE +end > ?1 AND start < ?2 AND start >= ?3 ORDER BY start, id";

}  // namespace

SpanReader::SpanReader(Database& db)
    : db_(db),
      rules_(loadRules(db)),
      projects_(loadProjects(db)),
      reader_(pool_),
      classifier_(pool_, rules_, projects_) {}

void SpanReader::each(const TimeRange& range, const std::function<void(const Ev&)>& visit) {
  const auto take = [&](const Cursor& row) {
    auto ev = reader_.read(row);
    if (ev.start <= range.start) ev.start = range.start;
    if (ev.end > range.end) ev.end = range.end;
    classifier_.classify(ev);
    visit(ev);
  };
  const Args bounds{range.start, range.end, range.start - kLongSpan};
  db_.scan(kLongBefore, bounds, take);
  db_.scan(kFromShortlyBefore, bounds, take);
}

std::vector<Ev> SpanReader::all(const TimeRange& range) {
  std::vector<Ev> spans;
  each(range, [&](const Ev& ev) { spans.push_back(ev); });
  return spans;
}

}  // namespace orvanta
