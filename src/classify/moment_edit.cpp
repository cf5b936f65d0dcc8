#include "classify/moment_edit.h"

#include <fmt/ranges.h>

#include <string_view>

#include "base/time_ranges.h"
#include "storage/ev.h"

namespace orvanta {
namespace {

constexpr double kSeam = 1;  // seconds: less between two spans is left empty

constexpr std::string_view kRows =
    "SELECT id, start, end, title, category, project_id FROM events "
    "WHERE id IN (SELECT value FROM json_each(?)) AND bundle=? AND idle=0 ORDER BY start, id";

Args argsOf(const std::vector<int64_t>& ids) {
  return {fmt::format("[{}]", fmt::join(ids, ",")), std::string(kManualBundle)};
}

std::optional<std::string> ownText(const Cursor& row, int column) {
  const auto text = row.str(column);
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

void shorten(Transaction& change, int64_t id, const TimeRange& was, const TimeRange& time) {
  const auto part = common(was, time);
  if (!(part.start < part.end)) {
    change.run("DELETE FROM events WHERE id=?", {id});
  } else if (length(part) < length(was)) {
    change.run("UPDATE events SET start=?, end=? WHERE id=?", {part.start, part.end, id});
  }
}

}  // namespace

std::vector<KeptMoment> momentsAmong(Database& db, const std::vector<int64_t>& ids) {
  std::vector<KeptMoment> moments;
  db.each(kRows, argsOf(ids), [&](const Cursor& row) {
    const TimeRange time{row.dbl(1), row.dbl(2)};
    auto title = ownText(row, 3);
    const bool goesOn = !moments.empty() && moments.back().title == title &&
                        time.start - moments.back().time.end < kSeam;
    if (!goesOn) moments.push_back({{}, time, std::move(title)});
    moments.back().ids.push_back(row.int_(0).value_or(0));
    moments.back().time.end = time.end;
  });
  return moments;
}

FilledTime editMoment(Transaction& change, const KeptMoment& moment,
                      const std::optional<std::string>& title, const TimeRange& time) {
  struct Row {
    int64_t id;
    TimeRange time;
  };
  std::vector<Row> rows;
  Moment gained{.title = title};
  change.each(kRows, argsOf(moment.ids), [&](const Cursor& row) {
    if (rows.empty()) gained.category = ownText(row, 4);
    if (rows.empty()) gained.project = row.int_(5);
    rows.push_back({row.int_(0).value_or(0), {row.dbl(1), row.dbl(2)}});
  });
  for (const auto& [id, was] : rows) shorten(change, id, was, time);
  change.run("UPDATE events SET title=? WHERE id IN (SELECT value FROM json_each(?))",
             {title, *argsOf(moment.ids).front().text()});
  return addMoment(change, without(time, {moment.time}), gained);
}

}  // namespace orvanta
