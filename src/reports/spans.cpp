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

SpanReader::SpanReader(Database& db) : db_(db), rules_(loadRules(db)), projects_(loadProjects(db)) {
  texts_.emplace(rules_, projects_);
}

Ev SpanReader::read(const Cursor& row, const TimeRange& range) {
  auto ev = clipped(texts_->reader.read(row), range);
  texts_->classifier.classify(ev);
  return ev;
}

void SpanReader::walk(const TimeRange& range, const std::function<void(const Cursor&)>& visit) {
  const auto args = OverlapQuery::args(range);
  for (const auto& sql : {query().longBefore, query().fromShortlyBefore}) {
    whole_ = db_.scan(sql, args, visit) && whole_;
  }
}

void SpanReader::each(const TimeRange& range, const std::function<void(const Ev&)>& visit) {
  walk(range, [&](const Cursor& row) { visit(read(row, range)); });
}

void SpanReader::stream(const TimeRange& range, const std::function<void(const Ev&)>& visit) {
  constexpr uint32_t kMostTexts = 50000;
  walk(range, [&](const Cursor& row) {
    if (texts_->pool.size() > kMostTexts) texts_.emplace(rules_, projects_);
    visit(read(row, range));
  });
}

std::vector<Ev> SpanReader::all(const TimeRange& range) {
  std::vector<Ev> spans;
  each(range, [&](const Ev& ev) { spans.push_back(ev); });
  return spans;
}

}  // namespace orvanta
