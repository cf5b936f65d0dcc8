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

// What is being recorded is deleted up to now, and goes on.
void Router::splitForDeletion(const std::vector<int64_t>& ids, TimeRange& range) {
  const auto open = parts_.tracker.openSpanId();
  if (ids.empty()) {
    if (const auto now = parts_.tracker.splitOpenSpan(range)) range.end = std::min(range.end, *now);
  } else if (open && std::find(ids.begin(), ids.end(), *open) != ids.end()) {
    constexpr auto kAlways = std::numeric_limits<double>::max();
    parts_.tracker.splitOpenSpan({-kAlways, kAlways});
  }
}

json::value Router::eventsDelete(const Body& body) {
  const auto ids = body.ids("ids");
  if (body.find("ids") && ids.empty()) throw AppError("aucun bloc");
  auto range = ids.empty() ? rangeOf(body) : TimeRange();
  const bool preview = body.b("preview").value_or(false);
  if (!preview) {
    if (const auto written = writable(); !written) return told(written);
    splitForDeletion(ids, range);
  }
  auto& db = parts_.db;
  const auto times = ids.empty() ? std::vector{range} : timesOf(db, ids);
  Recorded recorded;
  for (const auto& time : times) {
    const auto [spans, seconds] = recordedIn(db, time);
    recorded.spans += ids.empty() ? spans : 1;
    recorded.seconds += seconds;
  }
  json::object answer{{"ok", true}, {"deleted", recorded.spans}, {"seconds", recorded.seconds}};
  if (preview) return answer;

  const auto erasure = eraseTimes(times);
  Transaction change(db);
  for (const auto& [sql, args] : erasure.steps) change.run(sql, args);
  // Killed before the copies are erased, the next start does that.
  parts_.keeper.remember(change, times);
  const auto written = change.commit();
  if (!written) return told(written);
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
