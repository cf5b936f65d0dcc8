#include "reports/analytics.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <utility>

#include "reports/agg.h"
#include "reports/csv.h"
#include "reports/spans.h"
#include "reports/suggestions.h"
#include "reports/timeline.h"
#include "storage/json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr int kDaysPerWeek = 7;

// When activity began and ended; nothing without activity.
struct Extent {
  std::optional<double> first;
  std::optional<double> last;

  void add(const Ev& ev) {
    if (ev.idle) return;
    first = std::min(first.value_or(ev.start), ev.start);
    last = std::max(last.value_or(ev.end), ev.end);
  }
};

// The longest run of activity without an idle span in between; time of which nothing is known does
// not end a run. It lasts from the start of its first span to the end of its last, which need not
// be the latest end. Spans come by start.
class LongestSession {
 public:
  void add(const Ev& ev) {
    if (ev.idle) {
      longest_ = seconds();
      open_.reset();
      return;
    }
    if (!open_) open_ = {ev.start, ev.end};
    open_->end = ev.end;
  }

  double seconds() const {
    return open_ ? std::max(longest_, open_->end - open_->start) : longest_;
  }

 private:
  std::optional<TimeRange> open_;
  double longest_ = 0;
};

// Seconds by local date, of instants that come mostly in order: asks the calendar once a day.
class DayTotals {
 public:
  struct Total {
    std::string key;  // date
    double seconds = 0;
  };

  explicit DayTotals(const Calendar& calendar) : calendar_(calendar) {}

  void add(double instant, double seconds) {
    if (!(instant >= bounds_.start && instant < bounds_.end)) {
      const auto date = calendar_.dateOf(instant);
      bounds_ = calendar_.dayBounds(date);
      day_ = &days_[date.iso()];
    }
    day_->seconds += seconds;
  }

  const Tally<Total>& days() const { return days_; }

 private:
  const Calendar& calendar_;
  TimeRange bounds_;
  Tally<Total> days_;
  Total* day_ = nullptr;  // that of bounds_
};

// The report, which says so when it does not show all that is recorded.
json::object whole(json::object report, const SpanReader& reader) {
  if (!reader.whole()) {
    report["incomplete"] = kIncomplete;
  }
  return report;
}

json::array byName(const Projects& projects) {
  std::vector<const Project*> sorted;
  for (const auto& [id, project] : projects) sorted.push_back(&project);
  std::sort(sorted.begin(), sorted.end(),
            [](const Project* a, const Project* b) { return a->name < b->name; });
  json::array list;
  for (const auto* project : sorted) list.push_back(project->json());
  return list;
}

}  // namespace

Analytics::Analytics(Database& db, Clock clock, Calendar calendar)
    : db_(db), clock_(std::move(clock)), calendar_(std::move(calendar)) {}

Date Analytics::parseDate(const std::optional<std::string>& text) const {
  const auto date = text ? Date::parse(*text) : std::nullopt;
  return date ? *date : calendar_.dateOf(clock_());
}

json::object Analytics::day(const std::optional<std::string>& text) const {
  const auto date = parseDate(text);
  const auto bounds = calendar_.dayBounds(date);
  SpanReader reader(db_);
  const auto spans = reader.all(bounds);
  Extent extent;
  for (const auto& ev : spans) extent.add(ev);
  return whole({{"date", date.iso()},
                {"start", bounds.start},
                {"end", bounds.end},
                {"first", jsonOrNull(extent.first)},
                {"last", jsonOrNull(extent.last)},
                {"segments", segments(spans)},
                {"blocks", blocks(spans, db_.settings().minBlock)},
                {"totals", aggJson(aggregate(spans), reader.projects())},
                {"projects", byName(reader.projects())}},
               reader);
}

json::object Analytics::totals(const std::optional<std::string>& text) const {
  SpanReader reader(db_);
  Agg agg;
  reader.each(calendar_.dayBounds(parseDate(text)), [&](const Ev& ev) { agg.add(ev); });
  return {{"totals", aggJson(agg, reader.projects())}, {"projects", byName(reader.projects())}};
}

json::object Analytics::week(const std::optional<std::string>& text) const {
  struct Day {
    Date date;
    TimeRange bounds;
    Totals totals;
    Extent extent;
  };
  const auto monday = parseDate(text).monday();
  std::vector<Day> days;
  for (int i = 0; i < kDaysPerWeek; ++i) {
    const auto date = monday.plusDays(i);
    days.push_back({date, calendar_.dayBounds(date), {}, {}});
  }
  SpanReader reader(db_);
  reader.each({days.front().bounds.start, days.back().bounds.end}, [&](const Ev& ev) {
    for (auto& [date, bounds, totals, extent] : days) {
      if (!overlaps(ev, bounds)) continue;
      const auto part = clipped(ev, bounds);
      totals.add(part);
      extent.add(part);
    }
  });
  TextTally byCat;
  Tally<Totals::ProjectTotal> byProj;
  json::array list;
  for (const auto& [date, bounds, totals, extent] : days) {
    for (const auto& cat : totals.byCat.entries()) byCat[cat.key].seconds += cat.seconds;
    for (const auto& project : totals.byProj.entries())
      byProj[project.key].seconds += project.seconds;
    list.push_back({{"date", date.iso()},
                    {"active", totals.active},
                    {"by_category", byCategoryJson(totals.byCat)},
                    {"first", jsonOrNull(extent.first)},
                    {"last", jsonOrNull(extent.last)}});
  }
  return whole({{"monday", monday.iso()},
                {"days", std::move(list)},
                {"by_category", byCategoryJson(byCat)},
                {"by_project", byProjectJson(byProj, reader.projects())}},
               reader);
}

json::object Analytics::recap(const std::optional<std::string>& text) const {
  const auto monday = parseDate(text).monday();
  SpanReader reader(db_);
  auto current = summary(reader, monday);
  auto previous = summary(reader, monday.plusDays(-kDaysPerWeek));
  return whole({{"monday", monday.iso()},
                {"current", std::move(current)},
                {"previous", std::move(previous)}},
               reader);
}

json::object Analytics::summary(SpanReader& reader, const Date& monday) const {
  Agg agg;
  LongestSession session;
  // A span belongs wholly to the day on which it starts.
  DayTotals byDay(calendar_);
  const TimeRange range{calendar_.startOf(monday),
                        calendar_.startOf(monday.plusDays(kDaysPerWeek))};
  reader.each(range, [&](const Ev& ev) {
    agg.add(ev);
    session.add(ev);
    if (!ev.idle) byDay.add(ev.start, ev.duration());
  });
  auto result = aggJson(agg, reader.projects());
  const auto active = byDay.days().entries().size();
  const auto best = byDay.days().bySeconds(1);
  result["days_active"] = active;
  result["avg_per_day"] = active > 0 ? json::value(agg.active / static_cast<double>(active)) : 0;
  result["longest_session"] = session.seconds();
  result["best_day"] =
      best.empty() ? json::value(nullptr)
                   : json::value({{"date", best.front()->key}, {"active", best.front()->seconds}});
  return result;
}

json::array Analytics::suggestions() const {
  constexpr double kTwoWeeks = 1209600;
  const double now = clock_();
  SpanReader reader(db_);
  SuggestionFinder finder(reader.rules(), reader.projects());
  reader.each({now - kTwoWeeks, now}, [&](const Ev& ev) { finder.add(ev); });
  return finder.suggestions();
}

bool Analytics::exportCsv(const std::optional<std::string>& from,
                          const std::optional<std::string>& to,
                          const std::function<void(std::string_view)>& write) const {
  const TimeRange range{calendar_.startOf(parseDate(from)),
                        calendar_.startOf(parseDate(to).plusDays(1))};
  SpanReader reader(db_);
  CsvWriter csv(calendar_, reader.projects(), write);
  if (range.start < range.end) reader.stream(range, [&](const Ev& ev) { csv.add(ev); });
  csv.finish();
  return reader.whole();
}

}  // namespace orvanta
