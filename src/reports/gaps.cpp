#include "reports/gaps.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/time_ranges.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

constexpr double kNear = 1800;  // seconds
constexpr int kWeeks = 8;
constexpr std::size_t kMostLikely = 3;
constexpr double kSameDay = 0.2;  // what the rest of the day counts for, next to the neighbours

using Scores = std::map<int64_t, double>;

// What part of `range` went to each project, by weight.
void weigh(SpanReader& reader, const TimeRange& range, double weight, Scores& scores) {
  if (!(range.start < range.end)) return;
  reader.each(range, [&](const Ev& ev) {
    if (!ev.idle && ev.pid) scores[*ev.pid] += weight * ev.duration() / length(range);
  });
}

// The same hours of the day, so many days earlier.
TimeRange daysBefore(const Calendar& calendar, const TimeRange& gap, int days) {
  const auto date = calendar.dateOf(gap.start);
  const double shift = calendar.startOf(date) - calendar.startOf(date.plusDays(-days));
  return {gap.start - shift, gap.end - shift};
}

struct RecordedDay {
  std::vector<TimeRange> active;
  std::vector<TimeRange> idle;
};

RecordedDay recorded(SpanReader& reader, const TimeRange& bounds) {
  RecordedDay day;
  reader.each(bounds, [&](const Ev& ev) {
    (ev.idle ? day.idle : day.active).push_back({ev.start, ev.end});
  });
  day.active = joined(std::move(day.active));
  day.idle = joined(std::move(day.idle));
  return day;
}

std::vector<Gap> gapsOf(RecordedDay day, double least, const std::vector<TimeRange>& skipped) {
  std::vector<Gap> gaps;
  if (day.active.empty()) return gaps;
  const TimeRange extent{day.active.front().start, day.active.back().end};
  auto taken = std::move(day.active);
  taken.insert(taken.end(), skipped.begin(), skipped.end());
  for (const auto& time : without(extent, joined(std::move(taken)))) {
    if (length(time) < least) continue;
    double empty = 0;
    for (const auto& rest : without(time, day.idle)) empty += length(rest);
    gaps.push_back({time, length(time) - empty, {}});
  }
  return gaps;
}

}  // namespace

GapReport findGaps(SpanReader& reader, const Calendar& calendar, const DateRange& dates,
                   double least, const std::vector<TimeRange>& skipped) {
  GapReport report;
  for (auto date = dates.from; date <= dates.to; date = date.plusDays(1)) {
    auto gaps = gapsOf(recorded(reader, calendar.dayBounds(date)), least, skipped);
    for (auto& gap : gaps) gap.likely = likelyProjects(reader, calendar, gap.time);
    if (!gaps.empty()) report.days.push_back({date, std::move(gaps)});
  }
  report.whole = reader.whole();
  return report;
}

std::vector<Project> likelyProjects(SpanReader& reader, const Calendar& calendar,
                                    const TimeRange& gap) {
  constexpr int kDaysPerWeek = 7;
  Scores scores;
  weigh(reader, {gap.start - kNear, gap.start}, 1, scores);
  weigh(reader, {gap.end, gap.end + kNear}, 1, scores);
  weigh(reader, calendar.dayBounds(calendar.dateOf(gap.start)), kSameDay, scores);
  for (int week = 1; week <= kWeeks; ++week) {
    weigh(reader, daysBefore(calendar, gap, week * kDaysPerWeek), 1.0 / kWeeks, scores);
  }
  std::vector<std::pair<double, const Project*>> known;
  for (const auto& [id, score] : scores) {
    const auto project = reader.projects().find(id);
    if (score <= 0 || project == reader.projects().end() || project->second.archived) continue;
    known.emplace_back(score, &project->second);
  }
  std::stable_sort(known.begin(), known.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<Project> likely;
  for (const auto& [score, project] : known) {
    if (likely.size() < kMostLikely) likely.push_back(*project);
  }
  return likely;
}

}  // namespace orvanta
