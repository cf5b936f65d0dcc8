#include "reports/spans.h"

#include "storage/overlap.h"

namespace orvanta {
namespace {

// All but the bundle: no report asks for it, and every text of a row costs.
const OverlapQuery& query() {
  static const OverlapQuery kQuery(
      "id, start, end, app, title, url, domain, idle, category, project_id");
  return kQuery;
}

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
  const auto args = OverlapQuery::args(range);
  db_.scan(query().longBefore, args, take);
  db_.scan(query().fromShortlyBefore, args, take);
}

std::vector<Ev> SpanReader::all(const TimeRange& range) {
  std::vector<Ev> spans;
  each(range, [&](const Ev& ev) { spans.push_back(ev); });
  return spans;
}

}  // namespace orvanta
