// What is done with recorded time: assigning it by hand, and deleting it for good.
#include <algorithm>
#include <boost/json/serialize.hpp>
#include <limits>
#include <vector>

#include "bridge/change_labels.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "classify/assign_range.h"
#include "classify/learning.h"
#include "reports/explain.h"
#include "reports/spans.h"
#include "storage/overlap.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value assign(Core& core, const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucun bloc");
  const bool clear = body.b("clear").value_or(false);
  const auto category = clear ? std::nullopt : body.s("category");
  const auto project = clear ? std::nullopt : body.i("project_id");
  const auto list = json::serialize(*body.find("ids"));
  std::vector<LearnedRule> learned;
  const auto written = core.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "assign"};
    change.each(
        "SELECT count(*), sum(max(end - start, 0)) FROM events "
        "WHERE id IN (SELECT value FROM json_each(?))",
        {list}, [&](const Cursor& row) {
          note.spans = row.int_(0).value_or(0);
          note.seconds = row.dbl(1);
        });
    note.label = labels::assigned(category, projectName(core, project), note.spans);
    change.run(
        "UPDATE events SET category=?, project_id=? WHERE id IN (SELECT value FROM json_each(?))",
        {category, project, list});
    if (!clear) {
      learned = afterManualAssign(change, core.clock, core.calendar, ids, category, project);
    }
    for (const auto& rule : learned) note.learnedRules.push_back(rule.id);
    return note;
  });
  if (clear) return told(core, written);
  if (!written) learned.clear();
  return told(core, written, {{"ok", true}, {"learned", json::value_from(learned)}});
}

// The span that is being recorded would grow back over what is cut off from it, or carry what it is
// given out of the range.
json::value assignRange(Core& core, const Body& body) {
  const auto category = body.s("category");
  const auto project = body.i("project_id");
  const auto assign = [&](const TimeRange& range) {
    return core.history.record([&](Transaction& change) {
      const auto assigned = orvanta::assignRange(change, range, category, project);
      return ChangeNote{
          .kind = "assignRange",
          .label = labels::assigned(category, projectName(core, project), range, core.calendar),
          .spans = assigned.spans,
          .seconds = assigned.seconds};
    });
  };
  // What is rehearsed is gone before anything is recorded again.
  if (core.history.rehearsing()) return told(core, assign(rangeIn(body)));
  return told(core, core.tracker.changeRecorded(rangeIn(body), assign));
}

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
    db.each("SELECT start, end FROM events WHERE id=?", {id},
            [&](const Cursor& row) { times.push_back({row.dbl(0), row.dbl(1)}); });
  }
  return times;
}

// Where the span that is being recorded is to be deleted, all of it until now.
TimeRange reachOf(const Tracker& tracker, const std::vector<int64_t>& ids) {
  constexpr auto kAlways = std::numeric_limits<double>::max();
  const auto open = tracker.openSpanId();
  const bool named = open && std::find(ids.begin(), ids.end(), *open) != ids.end();
  return named ? TimeRange{-kAlways, kAlways} : TimeRange{};
}

json::value remove(Core& core, const Body& body) {
  auto& db = core.db;
  const auto ids = body.ids("ids");
  if (body.find("ids") && ids.empty()) throw AppError("aucun bloc");
  const auto range = ids.empty() ? rangeIn(body) : reachOf(core.tracker, ids);
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
  const auto written = core.tracker.changeRecorded(range, [&](const TimeRange& until) {
    look(until);
    Transaction change(db);
    core.history.erase(change, times,
                       {.kind = change_log::kErase,
                        .label = ids.empty() ? labels::erased(until, core.calendar)
                                             : labels::erased(answer["deleted"].as_int64()),
                        .spans = answer["deleted"].as_int64(),
                        .seconds = answer["seconds"].as_double()});
    // Killed before the copies are erased, the next start does that.
    core.keeper.remember(change, times);
    return change.commit();
  });
  if (!written) return told(core, written, {{"ok", true}, {"deleted", 0}, {"seconds", 0}});
  return erasedFromCopies(core, times, std::move(answer));
}

json::value explain(Core& core, const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucun bloc");
  const auto explanations = explainSpans(core.db, ids);
  if (!explanations.whole) throw AppError(kIncomplete);
  return json::value_from(explanations.list);
}

constexpr Route kRoutes[]{
    {"events.explain", RouteKind::Read, explain, "ids"},
    {"events.assign", RouteKind::Write, assign, "ids, category, project_id, clear"},
    {"events.assignRange", RouteKind::Write, assignRange, "start, end, category, project_id"},
    {"events.delete", RouteKind::Ask, remove, "ids, start, end, preview"},
};

}  // namespace

RouteTable eventRoutes() {
  return kRoutes;
}

}  // namespace orvanta
