// Time away from the screen: what lies between activities, moments added by hand, and what the user
// is asked after an absence.
#include "classify/moments.h"
#include <algorithm>

#include "base/cut.h"
#include "base/text.h"
#include "base/time_ranges.h"
#include "bridge/absence.h"
#include "bridge/change_labels.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "classify/moment_edit.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr double kLongest = 31 * 86400.0;  // seconds; more is a slip
constexpr double kLatest = 253402300800;   // the year 10000: further on there are no dates
constexpr double kUsualGap = 600;
constexpr int kMostGapDays = 92;

std::vector<TimeRange> rangesIn(const Body& body) {
  const auto* list = body.find("ranges");
  if (!list || !list->is_array()) throw AppError("plage invalide");
  std::vector<TimeRange> ranges;
  for (const auto& entry : list->get_array()) {
    static const json::object kNothing;
    const Body range(entry.is_object() ? entry.get_object() : kNothing);
    const auto from = range.d("from");
    const auto to = range.d("to");
    const bool possible = from && to && *from < *to && *from >= 0 && *to < kLatest;
    if (!possible) throw AppError("plage invalide");
    ranges.push_back({*from, *to});
  }
  ranges = joined(std::move(ranges));
  double seconds = 0;
  for (const auto& range : ranges) seconds += length(range);
  if (ranges.empty()) throw AppError("plage invalide");
  if (seconds > kLongest) throw AppError("plages trop longues : 31 jours au plus");
  return ranges;
}

std::optional<std::string> noteIn(const Body& body) {
  const auto note = body.trimmed("title").value_or("");
  return unlessBlank(firstBytes(storedText(note), kLongestTitle));
}

Moment momentIn(Core& core, const Body& body) {
  Moment moment{.category = body.s("category"), .project = body.i("project_id")};
  moment.title = noteIn(body);
  const auto category = moment.category ? parsed<Category>(*moment.category) : std::nullopt;
  if (moment.category && (!category || *category >= Category::Nonclasse)) {
    throw AppError("catégorie inconnue");
  }
  if (moment.project && !projectName(core, moment.project)) throw AppError("projet inconnu");
  return moment;
}

// Those parts that lie before an instant.
std::vector<TimeRange> before(const std::vector<TimeRange>& ranges, double end) {
  std::vector<TimeRange> past;
  for (const auto& range : ranges) past.push_back({range.start, std::min(range.end, end)});
  return joined(std::move(past));
}

// What is being recorded goes on beside it: an activity stays as it is, an absence begins anew.
json::value add(Core& core, const Body& body) {
  const auto ranges = rangesIn(body);
  const auto moment = momentIn(core, body);
  FilledTime filled;
  const auto work = [&](const TimeRange& reach) {
    return core.history.record([&](Transaction& change) {
      filled = addMoment(change, before(ranges, std::min(reach.end, core.clock())), moment);
      return ChangeNote{.kind = "moments.add",
                        .label = labels::added(moment.category, projectName(core, moment.project),
                                               ranges, core.calendar),
                        .spans = filled.spans,
                        .seconds = filled.seconds};
    });
  };
  const TimeRange reach{ranges.front().start, ranges.back().end};
  // What is rehearsed is gone before anything is recorded again.
  const auto written =
      core.history.rehearsing() ? work(reach) : core.tracker.changeAbsences(reach, work);
  if (!written) filled = {};
  if (written) core.shell.refreshMenu();
  double asked = 0;
  for (const auto& range : ranges) asked += length(range);
  double past = 0;
  for (const auto& range : before(ranges, core.clock())) past += length(range);
  return told(core, written,
              {{"ok", true},
               {"spans", filled.spans},
               {"added", filled.seconds},
               {"taken", filled.taken},
               {"future", asked - past}});
}

std::vector<KeptMoment> knownMoments(Core& core, const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucun bloc");
  return momentsAmong(core.db, ids);
}

json::value get(Core& core, const Body& body) {
  json::array list;
  for (const auto& moment : knownMoments(core, body)) {
    list.push_back({{"ids", json::array(moment.ids.begin(), moment.ids.end())},
                    {"from", moment.time.start},
                    {"to", moment.time.end},
                    {"title", moment.title ? json::value(*moment.title) : json::value()}});
  }
  return {{"moments", std::move(list)}};
}

// When a moment is to be from now on.
TimeRange timeIn(const Body& body, const KeptMoment& moment) {
  const TimeRange time{body.d("from").value_or(moment.time.start),
                       body.d("to").value_or(moment.time.end)};
  if (!(time.start < time.end && time.start >= 0 && time.end < kLatest)) {
    throw AppError("plage invalide");
  }
  if (length(time) > kLongest) throw AppError("plages trop longues\u00a0: 31 jours au plus");
  constexpr double kLeast = 1;  // seconds
  if (length(common(time, moment.time)) < std::min(kLeast, length(moment.time))) {
    throw AppError("un moment garde une partie de ses heures\u00a0; sinon, ajoutez-en un autre");
  }
  return time;
}

json::value edit(Core& core, const Body& body) {
  const auto moments = knownMoments(core, body);
  if (moments.size() != 1 || moments.front().ids.size() != body.ids("ids").size()) {
    throw AppError("ce n’est pas un moment ajouté à la main");
  }
  const auto& moment = moments.front();
  auto time = timeIn(body, moment);
  FilledTime gained;
  const TimeRange reach{std::min(time.start, moment.time.start),
                        std::max(time.end, moment.time.end)};
  const auto written = core.tracker.changeAbsences(reach, [&](const TimeRange& limit) {
    return core.history.record([&](Transaction& change) {
      const double until = std::min(limit.end, core.clock());
      time.end = std::min(time.end, std::max(until, moment.time.end));
      gained = editMoment(change, moment, body.find("title") ? noteIn(body) : moment.title, time);
      return ChangeNote{.kind = "moments.edit",
                        .label = labels::momentChanged(time, core.calendar),
                        .spans = static_cast<int64_t>(moment.ids.size()) + gained.spans,
                        .seconds = length(common(time, moment.time)) + gained.seconds};
    });
  });
  if (!written) gained = {};
  if (written) core.shell.refreshMenu();
  return told(core, written, {{"ok", true}, {"added", gained.seconds}, {"taken", gained.taken}});
}

json::value gaps(Core& core, const Body& body) {
  const auto dates = datesIn(core, body);
  if (dates.days() > kMostGapDays) throw AppError("période trop longue : trois mois au plus");
  const double least = std::max(body.d("min_seconds").value_or(kUsualGap), 1.0);
  const auto report = core.analytics.gaps(dates, least, absence::skipped(core.db));
  json::array days;
  double total = 0;
  int64_t count = 0;
  for (const auto& [date, list] : report.days) {
    json::array rows;
    for (const auto& gap : list) {
      json::array likely;
      for (const auto& project : gap.likely) {
        likely.push_back({{"project_id", project.id},
                          {"name", project.name},
                          {"color", project.color},
                          {"category", project.category}});
      }
      rows.push_back({{"from", gap.time.start},
                      {"to", gap.time.end},
                      {"duration", length(gap.time)},
                      {"idle", gap.idle},
                      {"likely", std::move(likely)}});
      total += length(gap.time);
      ++count;
    }
    days.push_back({{"date", date.iso()}, {"gaps", std::move(rows)}});
  }
  json::object answer{{"days", std::move(days)}, {"count", count}, {"duration", total}};
  if (!report.whole) answer["incomplete"] = kIncomplete;
  return answer;
}

// Taken back, it is a gap again.
json::value skip(Core& core, const Body& body) {
  const auto ranges = rangesIn(body);
  const auto values = absence::skipping(core.db, ranges, core.clock());
  const auto written = core.db.setSettings(values, [&](const auto& write) {
    return core.history.record(
        [&](Transaction& change) {
          write(change);
          return ChangeNote{.kind = "moments.skip",
                            .label = labels::skipped(ranges, core.calendar)};
        },
        Recorded::Settings);
  });
  return told(core, written);
}

json::value asking(Core& core, const Body& /*body*/) {
  return {{"ask_minutes", absence::askMinutes(core.db)}};
}

json::value setAsking(Core& core, const Body& body) {
  const auto minutes = body.i("ask_minutes");
  if (!minutes || (*minutes != 0 && (*minutes < 5 || *minutes > 240))) {
    throw AppError("entre 5 et 240 minutes, ou 0 pour ne jamais demander");
  }
  return told(core, absence::setAskMinutes(core.db, *minutes),
              {{"ok", true}, {"ask_minutes", *minutes}});
}

constexpr Route kRoutes[]{
    {"moments.add", RouteKind::Write, add, "ranges, title, category, project_id"},
    {"moments.get", RouteKind::Read, get, "ids"},
    {"moments.edit", RouteKind::Write, edit, "ids, title, from, to"},
    {"moments.gaps", RouteKind::Read, gaps, "from, to, min_seconds"},
    {"moments.skip", RouteKind::Write, skip, "ranges"},
    {"absence.get", RouteKind::Read, asking},
    {"absence.set", RouteKind::Write, setAsking, "ask_minutes"},
};

}  // namespace

RouteTable momentRoutes() {
  return kRoutes;
}

}  // namespace orvanta
