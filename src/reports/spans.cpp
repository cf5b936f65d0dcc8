#include "reports/spans.h"

#include <fmt/ranges.h>

#include <limits>

#include "storage/overlap.h"

namespace orvanta {
namespace {

// All but the bundle: no report asks for it, and every text of a row costs. First the last of the
// table: SQLite finds the others on its way there, once for a row.
constexpr auto kColumns = "project_id, id, start, end, app, title, url, domain, idle, category";

const OverlapQuery& query() {
  static const OverlapQuery kQuery(kColumns);
  return kQuery;
}

}  // namespace

SpanReader::SpanReader(Database& db, const CurrentRules& rules)
    : db_(db), snapshot_(db), book_(rules.book()), reader_(texts_), classifier_(texts_, book_) {}

SpanReader::SpanReader(Database& db) : SpanReader(db, CurrentRules(db)) {}

Ev SpanReader::read(const Cursor& row, const TimeRange& range) {
  auto ev = reader_.read(row);
  clip(ev, range);
  classifier_.classify(ev);
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

void SpanReader::eachOf(const std::vector<int64_t>& ids,
                        const std::function<void(const Ev&)>& visit) {
  static const auto kSelect = fmt::format(
      "SELECT {} FROM events WHERE id IN (SELECT value FROM json_each(?)) ORDER BY start, id",
      kColumns);
  constexpr auto kForever = std::numeric_limits<double>::infinity();
  const auto take = [&](const Cursor& row) {
    visit(reader_.kept(read(row, {-kForever, kForever})));
  };
  whole_ = db_.scan(kSelect, {fmt::format("[{}]", fmt::join(ids, ","))}, take) && whole_;
}

std::vector<Ev> SpanReader::all(const TimeRange& range) {
  std::vector<Ev> spans;
  each(range, [&](const Ev& ev) { spans.push_back(reader_.kept(ev)); });
  return spans;
}

}  // namespace orvanta
