#include "reports/spans.h"

#include <fmt/ranges.h>

#include <limits>

#include "storage/overlap.h"

namespace orvanta {
namespace {

// All but the bundle: no report asks for it, and every text of a row costs.
constexpr auto kColumns = "id, start, end, app, title, url, domain, idle, category, project_id";

const OverlapQuery& query() {
  static const OverlapQuery kQuery(kColumns);
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
  walk(range, [&](const Cursor& row) {
    if (texts_->pool.size() > kMostTexts) texts_.emplace(rules_, projects_);
    visit(read(row, range));
  });
}

void SpanReader::eachOf(const std::vector<int64_t>& ids,
                        const std::function<void(const Ev&)>& visit) {
  static const auto kSelect = fmt::format(
      "SELECT {} FROM events WHERE id IN (SELECT value FROM json_each(?)) ORDER BY start, id",
      kColumns);
  constexpr auto kForever = std::numeric_limits<double>::infinity();
  const auto take = [&](const Cursor& row) { visit(read(row, {-kForever, kForever})); };
  whole_ = db_.scan(kSelect, {fmt::format("[{}]", fmt::join(ids, ","))}, take) && whole_;
}

std::vector<Ev> SpanReader::all(const TimeRange& range) {
  std::vector<Ev> spans;
  each(range, [&](const Ev& ev) { spans.push_back(ev); });
  return spans;
}

}  // namespace orvanta
