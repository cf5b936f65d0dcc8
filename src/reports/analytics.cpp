#include "reports/analytics.h"

#include <algorithm>
#include <utility>

#include "reports/agg.h"
#include "reports/csv.h"
#include "reports/spans.h"
#include "reports/suggestions.h"
#include "reports/timeline.h"

namespace orvanta {
namespace {

constexpr int kDaysPerWeek = 7;

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
class DaySums {
 public:
  struct Sum {
    std::string key;  // date
    double seconds = 0;
  };

  explicit DaySums(const Calendar& calendar) : calendar_(calendar.pinned()) {}

  void add(double instant, double seconds) {
    if (!(instant >= bounds_.start && instant < bounds_.end)) {
      const auto date = calendar_.dateOf(instant);
      bounds_ = calendar_.dayBounds(date);
      day_ = &days_[date.iso()];
    }
    day_->seconds += seconds;
  }

  const Tally<Sum>& days() const { return days_; }

 private:
  const Calendar calendar_;
  TimeRange bounds_;
  Tally<Sum> days_;
  Sum* day_ = nullptr;  // that of bounds_
};

std::vector<Project> byName(const Projects& projects) {
  std::vector<Project> sorted;
  for (const auto& [id, project] : projects) sorted.push_back(project);
  std::sort(sorted.begin(), sorted.end(),
            [](const Project& a, const Project& b) { return a.name < b.name; });
  return sorted;
}

}  // namespace

Analytics::Analytics(Database& db, Clock clock, Calendar calendar)
    : db_(db),
      rules_(db),
      clock_(std::move(clock)),
      calendar_(std::move(calendar)),
      search_(db, rules_, calendar_) {}

DayReport Analytics::day(const Date& date) const {
  DayReport report;
  report.date = date;
  report.bounds = calendar_.dayBounds(date);
  const auto minBlock = db_.settings().minBlock;  // before: no report waits for who writes
  SpanReader reader(db_, rules_);
  const auto spans = reader.all(report.bounds);
  for (const auto& ev : spans) widen(report.extent, ev);
  report.segments = segments(spans);
  report.blocks = blocks(spans, minBlock, report.brief);
  report.totals = totalsOf(aggregate(spans), reader.projects());
  report.projects = byName(reader.projects());
  report.whole = reader.whole();
  return report;
}

DayTotals Analytics::totals(const Date& date) const {
  SpanReader reader(db_, rules_);
  Agg agg;
  reader.each(calendar_.dayBounds(date), [&](const Ev& ev) { agg.add(ev); });
  return {totalsOf(agg, reader.projects()), byName(reader.projects())};
}

WeekReport Analytics::week(const Date& date) const {
  struct Day {
    TimeRange bounds;
    Sums sums;
    Extent extent;

    void add(const Ev& ev) {
      sums.add(ev);
      widen(extent, ev);
    }
  };
  WeekReport report{.monday = date.monday()};
  const auto calendar = calendar_.pinned();
  std::vector<Day> days;
  days.reserve(kDaysPerWeek);
  for (int i = 0; i < kDaysPerWeek; ++i) {
    days.push_back({calendar.dayBounds(report.monday.plusDays(i)), {}, {}});
  }
  SpanReader reader(db_, rules_);
  reader.each({days.front().bounds.start, days.back().bounds.end}, [&](const Ev& ev) {
    for (auto& day : days) {
      if (!overlaps(ev, day.bounds)) continue;
      const bool whole = ev.start >= day.bounds.start && ev.end <= day.bounds.end;
      whole ? day.add(ev) : day.add(clipped(ev, day.bounds));
    }
  });
  TextTally byCat;
  Tally<Sums::ProjectTotal> byProj;
  for (int i = 0; i < kDaysPerWeek; ++i) {
    const auto& [bounds, sums, extent] = days[static_cast<std::size_t>(i)];
    for (const auto& cat : sums.byCat.entries()) byCat[cat.key].seconds += cat.seconds;
    for (const auto& project : sums.byProj.entries())
      byProj[project.key].seconds += project.seconds;
    report.days.push_back(
        {report.monday.plusDays(i), sums.active, categorySums(sums.byCat), extent});
  }
  report.byCategory = categorySums(byCat);
  report.byProject = projectSums(byProj, reader.projects());
  report.whole = reader.whole();
  return report;
}

Recap Analytics::recap(const Date& date) const {
  const auto monday = date.monday();
  SpanReader reader(db_, rules_);
  auto current = summary(reader, monday);
  auto previous = summary(reader, monday.plusDays(-kDaysPerWeek));
  return {monday, std::move(current), std::move(previous), reader.whole()};
}

WeekSummary Analytics::summary(SpanReader& reader, const Date& monday) const {
  Agg agg;
  LongestSession session;
  // A span belongs wholly to the day on which it starts.
  DaySums byDay(calendar_);
  const TimeRange range{calendar_.startOf(monday),
                        calendar_.startOf(monday.plusDays(kDaysPerWeek))};
  reader.each(range, [&](const Ev& ev) {
    agg.add(ev);
    session.add(ev);
    if (!ev.idle) byDay.add(ev.start, ev.duration());
  });
  WeekSummary summary{totalsOf(agg, reader.projects())};
  summary.daysActive = byDay.days().entries().size();
  summary.longestSession = session.seconds();
  for (const auto* best : byDay.days().bySeconds(1)) summary.bestDay = {best->key, best->seconds};
  return summary;
}

std::vector<Suggestion> Analytics::suggestions() const {
  constexpr double kTwoWeeks = 1209600;
  const double now = clock_();
  SpanReader reader(db_, rules_);
  SuggestionFinder finder(reader.rules(), reader.projects());
  reader.each({now - kTwoWeeks, now}, [&](const Ev& ev) { finder.add(ev); });
  return finder.suggestions();
}

PeriodReport Analytics::period(const PeriodQuestion& question) const {
  SpanReader reader(db_, rules_);
  return periodReport(reader, calendar_, clock_(), question);
}

PeriodDays Analytics::periodDays(const DateRange& range, const ActivityFilter& filter) const {
  SpanReader reader(db_, rules_);
  return orvanta::periodDays(reader, calendar_, range, filter);
}

GapReport Analytics::gaps(const DateRange& dates, double least,
                          const std::vector<TimeRange>& skipped) const {
  SpanReader reader(db_, rules_);
  return findGaps(reader, calendar_.pinned(), dates, least, skipped);
}

std::vector<Project> Analytics::likelyProjects(const TimeRange& gap) const {
  SpanReader reader(db_, rules_);
  return orvanta::likelyProjects(reader, calendar_, gap);
}

std::vector<GoalState> Analytics::goals(const std::vector<Goal>& goals, bool week) const {
  SpanReader reader(db_, rules_);
  return goalStates(reader, calendar_, clock_(), goals, week);
}

std::vector<GoalHistory> Analytics::goalHistory(const std::vector<Goal>& goals,
                                                const DateRange& range) const {
  SpanReader reader(db_, rules_);
  return orvanta::goalHistory(reader, calendar_, clock_(), goals, range);
}

Sheet Analytics::sheet(const SheetQuestion& question) const {
  SpanReader reader(db_, rules_);
  bool whole = true;
  const auto terms = loadTerms(db_, &whole);
  auto sheet = sheetReport(reader, calendar_, terms, question);
  sheet.whole = sheet.whole && whole;
  return sheet;
}

SheetEntries Analytics::sheetEntries(const SheetQuestion& question) const {
  SpanReader reader(db_, rules_);
  return orvanta::sheetEntries(reader, calendar_, question);
}

std::vector<ProjectHours> Analytics::projectHours() const {
  SpanReader reader(db_, rules_);
  return orvanta::projectHours(reader, calendar_, clock_(), loadTerms(db_));
}

void Analytics::releaseMemory() const {
  rules_.release();
  search_.releaseUnused();
  db_.releaseScanMemory();
}

bool Analytics::exportCsv(const Date& from, const Date& to,
                          const std::function<void(std::string_view)>& write) const {
  const TimeRange range{calendar_.startOf(from), calendar_.startOf(to.plusDays(1))};
  SpanReader reader(db_, rules_);
  CsvWriter csv(calendar_, reader.projects(), write);
  if (range.start < range.end) reader.each(range, [&](const Ev& ev) { csv.add(ev); });
  csv.finish();
  return reader.whole();
}

bool Analytics::exportFound(const std::string& text,
                            const std::function<void(std::string_view)>& write) const {
  const auto book = rules_.book();
  CsvWriter csv(calendar_, book->projects(), write);
  const bool whole = search_.each(text, [&](const Ev& ev) { csv.add(ev); });
  csv.finish();
  return whole;
}

}  // namespace orvanta
