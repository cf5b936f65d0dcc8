#include "storage/erasure.h"

#include <fmt/ranges.h>

#include <cmath>
#include <iterator>
#include <utility>

#include "storage/erased_times.h"
#include "storage/past.h"
#include "storage/schema.h"
#include "storage/statement.h"

namespace orvanta {
namespace {

// The ids of the spans that began before the range and reach into it, by two short walks along an
// index each, see OverlapQuery. ?1 and ?2 are the range, ?3 is its start less the length of a long
// span, ?4 to ?7 are the edges of the range less and plus an instant.
std::string idsReachingIn(std::string_view end) {
  return fmt::format(
      "(SELECT id FROM events INDEXED BY idx_events_long WHERE {1} AND end > ?5 "
      "AND +start < ?3 AND {0} UNION ALL "
      "SELECT id FROM events WHERE start >= ?3 AND start < ?4 AND +end > ?5 AND {0})",
      end, kIsLong);
}

Args rangeArgs(const TimeRange& range) {
  return {range.start,
          range.end,
          range.start - kLongSpan,
          range.start - kSameInstant,
          range.start + kSameInstant,
          range.end - kSameInstant,
          range.end + kSameInstant};
}

std::string withoutIndex(std::string sql) {
  constexpr std::string_view kHint = "INDEXED BY ";
  for (auto hint = sql.find(kHint); hint != std::string::npos; hint = sql.find(kHint)) {
    sql.erase(hint, sql.find(' ', hint + kHint.size()) - hint);
  }
  return sql;
}

void append(Erasure& all, Erasure more) {
  std::move(more.steps.begin(), more.steps.end(), std::back_inserter(all.steps));
}

}  // namespace

void addErasing(sqlite3* connection) {
  addShowsSite(connection);
  addRestOf(connection);
}

Erasure eraseRange(const TimeRange& range) {
  if (!std::isfinite(range.start) || !std::isfinite(range.end) || !(range.start < range.end)) {
    return {};
  }
  const auto args = rangeArgs(range);
  return {{
      // What lasts beyond the end goes on as a span of its own.
      {"INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
       "SELECT ?2,end,app,bundle,title,url,domain,idle,category,project_id FROM events "
       "WHERE id IN " +
           idsReachingIn("+end > ?7"),
       args},
      {"UPDATE events SET end=?1 WHERE id IN " + idsReachingIn("1"), args},
      {"UPDATE events SET start=?2 WHERE start >= ?4 AND start < ?6 AND +end > ?7", args},
      {"DELETE FROM events WHERE start >= ?4 AND start < ?2 AND +end <= ?7", args},
  }};
}

Erasure eraseTimes(const std::vector<TimeRange>& ranges) {
  Erasure all;
  for (const auto& range : ranges) {
    auto part = eraseRange(range);
    if (part.steps.empty()) {
      part.steps.push_back({"DELETE FROM events WHERE start=? AND +end <= start", {range.start}});
    }
    append(all, std::move(part));
  }
  append(all, forgetChanges(ranges));
  return all;
}

Erasure eraseSpans(const std::vector<int64_t>& ids, const std::vector<TimeRange>& times) {
  Erasure all{{{"DELETE FROM events WHERE id IN (SELECT value FROM json_each(?))",
                {fmt::format("[{}]", fmt::join(ids, ","))}}}};
  append(all, forgetChanges(times));
  return all;
}

Erasure forgetChanges(const std::vector<TimeRange>& times) {
  // Also what only touches them.
  std::vector<TimeRange> near;
  for (const auto& [start, end] : times) {
    near.push_back({start - 2 * kSameInstant, end + 2 * kSameInstant});
  }
  return {{{"DELETE FROM changes WHERE rest_of(?, held_from, held_to) IS NOT NULL",
            {timesText(near)},
            true},
           // What was measured may name anything.
           {"UPDATE changes SET examples=NULL WHERE examples IS NOT NULL", {}, true}}};
}

// Through all spans, however many the ranges are.
Erasure eraseTimesInCopy(const std::vector<TimeRange>& ranges) {
  const auto times = timesText(ranges);
  Erasure all{{
      {"INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
       "SELECT json_extract(rest.value, '$[0]'), json_extract(rest.value, '$[1]'), app, bundle, "
       "title, url, domain, idle, category, project_id "
       "FROM events, json_each(rest_of(?1, start, end)) AS rest",
       {times}},
      {"DELETE FROM events WHERE rest_of(?, start, end) IS NOT NULL", {times}},
      {"DELETE FROM changes WHERE words IS NOT NULL", {}, true},
  }};
  append(all, forgetChanges(ranges));
  return all;
}

Erasure stripTitlesBefore(double cutOff) {
  return {{{"UPDATE events SET title=NULL, url=NULL "
            "WHERE end < ? AND (title IS NOT NULL OR url IS NOT NULL)",
            {cutOff}},
           {"DELETE FROM changes WHERE titled_from < ?", {cutOff}, true}}};
}

int run(const Erasure& erasure, sqlite3* connection) {
  addErasing(connection);
  const bool changes = Statement(connection, "SELECT 1 FROM changes").ok();
  for (const auto& [sql, args, ofChanges] : erasure.steps) {
    if (ofChanges && !changes) continue;
    Statement statement(connection, sql);
    if (!statement.ok()) statement = Statement(connection, withoutIndex(sql));
    if (!statement.ok()) return sqlite3_errcode(connection);
    const int code = statement.visitRows(args, [](const Cursor&) {});
    if (code != SQLITE_DONE) return code;
  }
  return SQLITE_OK;
}

}  // namespace orvanta
