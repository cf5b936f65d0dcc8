// The router's route that deletes recorded time for good.
#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "bridge/app_error.h"
#include "bridge/router.h"
#include "storage/overlap.h"

namespace orvanta {

namespace json = boost::json;

namespace {

struct Recorded {
  int64_t spans = 0;
  double seconds = 0;
};

// What lies in the range, absences included.
Recorded recordedIn(Database& db, const TimeRange& range) {
  static const OverlapQuery kQuery("start, end");
  Recorded recorded;
  const auto add = [&](const Cursor& row) {
    ++recorded.spans;
    recorded.seconds += std::min(row.dbl(1), range.end) - std::max(row.dbl(0), range.start);
  };
  db.each(kQuery.longBefore, OverlapQuery::args(range), add);
  db.each(kQuery.fromShortlyBefore, OverlapQuery::args(range), add);
  return recorded;
}

std::vector<TimeRange> timesOf(Database& db, const std::vector<int64_t>& ids) {
  std::vector<TimeRange> times;
  for (const auto id : ids) {
    db.each("SELECT start, end FROM events WHERE id=?", {id}, [&](const Cursor& row) {
      times.push_back({row.dbl(0), row.dbl(1)});
    });
  }
  return times;
}

}  // namespace

// Where the span that is being recorded is to be deleted, all of it until now.
TimeRange Router::reachOf(const std::vector<int64_t>& ids) {
  constexpr auto kAlways = std::numeric_limits<double>::max();
  const auto open = parts_.tracker.openSpanId();
  const bool named = open && std::find(ids.begin(), ids.end(), *open) != ids.end();
  return named ? TimeRange{-kAlways, kAlways} : TimeRange{};
}

json::value Router::eventsDelete(const Body& body) {
  auto& db = parts_.db;
  const auto ids = body.ids("ids");
  if (body.find("ids") && ids.empty()) throw AppError("aucun bloc");
  const auto range = ids.empty() ? rangeOf(body) : reachOf(ids);
  std::vector<TimeRange> times;
  json::object answer{{"ok", true}};
  const auto look = [&](const TimeRange& until) {
    times = ids.empty() ? std::vector{until} : timesOf(db, ids);
    Recorded recorded;
    for (const auto& time : times) {
      const auto [spans, seconds] = recordedIn(db, time);
      recorded.spans += ids.empty() ? spans : 1;
      recorded.seconds += seconds;
    }
    answer["deleted"] = recorded.spans;
    answer["seconds"] = recorded.seconds;
  };
  if (body.b("preview").value_or(false)) {
    look(range);
    return answer;
  }
  const auto written = parts_.tracker.changeRecorded(range, [&](const TimeRange& until) {
    look(until);
    Transaction change(db);
    for (const auto& [sql, args] : eraseTimes(times).steps) change.run(sql, args);
    // Killed before the copies are erased, the next start does that.
    parts_.keeper.remember(change, times);
    return change.commit();
  });
  if (!written) return told(written, {{"ok", true}, {"deleted", 0}, {"seconds", 0}});
  parts_.history.forgetUndone();
  parts_.platform.refreshMenu();
  if (!parts_.keeper.erase(times)) {
    answer["message"] =
        "Supprimé du fichier des données, mais une copie n'a pas pu être effacée ; le journal du "
        "système dit laquelle.";
  }
  return answer;
}

}  // namespace orvanta
