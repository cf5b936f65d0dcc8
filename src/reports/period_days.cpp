#include "reports/period_days.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "reports/local_days.h"
#include "reports/spans.h"
#include "reports/wall_hours.h"

namespace orvanta {
namespace {

bool meant(const ActivityFilter& filter, const Ev& ev, const Projects& projects) {
  if (filter.category && ev.cat.view() != *filter.category) return false;
  if (filter.app && ev.app.view() != *filter.app) return false;
  if (filter.domain && (!ev.domain || ev.domain.view() != *filter.domain)) return false;
  const auto project = ev.pid ? projects.find(*ev.pid) : projects.end();
  const bool known = project != projects.end();
  if (filter.withoutProject && known) return false;
  if (filter.project && ev.pid != filter.project) return false;
  return !filter.client || (known && project->second.client == *filter.client);
}

// The part of a span that a filter by weekday and hour leaves of it.
class HourFilter {
 public:
  HourFilter(const Calendar& calendar, const ActivityFilter& filter)
      : hours_(calendar), filter_(filter) {}

  double secondsOf(const TimeRange& day, const Ev& ev) {
    if (!filter_.hour && !filter_.weekday) return ev.duration();
    hours_.add(day, ev.start, ev.end);
    const double before = std::exchange(counted_, counted());
    return counted_ - before;
  }

 private:
  double counted() const {
    double seconds = 0;
    int weekday = 0;
    for (const auto& hours : hours_.sums()) {
      const bool on = weekday == filter_.weekday.value_or(weekday);
      int hour = 0;
      for (const double sum : hours) {
        if (on && hour == filter_.hour.value_or(hour)) seconds += sum;
        ++hour;
      }
      ++weekday;
    }
    return seconds;
  }

  WallHours hours_;
  const ActivityFilter& filter_;
  double counted_ = 0;
};

// Where only times matter no text of a row is looked at.
void eachActivity(SpanReader& reader, const TimeRange& range,
                  const std::function<void(const Ev&)>& visit) {
  struct Columns {
    int start, end, idle;
  };
  std::optional<Columns> at;
  reader.walk(range, [&](const Cursor& row) {
    if (!at) at = {row.column("start"), row.column("end"), row.column("idle")};
    if (row.int_(at->idle) == 1) return;
    Ev ev;
    ev.start = row.dbl(at->start);
    ev.end = row.dbl(at->end);
    clip(ev, range);
    visit(ev);
  });
}

}  // namespace

PeriodDays periodDays(SpanReader& reader, const Calendar& calendar, const DateRange& range,
                      const ActivityFilter& filter) {
  PeriodDays answer{.dates = range};
  LocalDays days(calendar, range);
  HourFilter hours(calendar, filter);
  std::vector<double> sums(days.size());
  const auto add = [&](const Ev& ev) {
    days.split(ev, [&](std::size_t day, const Ev& part) {
      sums[day] += hours.secondsOf(days.bounds(day), part);
    });
  };
  if (filter.ofAnyActivity()) {
    eachActivity(reader, days.range(), add);
  } else {
    reader.each(days.range(), [&](const Ev& ev) {
      if (!ev.idle && meant(filter, ev, reader.projects())) add(ev);
    });
  }
  const double most = *std::max_element(sums.begin(), sums.end());
  constexpr int kLevels = 4;
  for (std::size_t day = 0; day < sums.size(); ++day) {
    if (sums[day] <= 0) continue;
    const int level = static_cast<int>(std::ceil(sums[day] / most * kLevels));
    answer.days.push_back({days.date(day), sums[day], std::clamp(level, 1, kLevels)});
    answer.seconds += sums[day];
  }
  answer.whole = reader.whole();
  return answer;
}

}  // namespace orvanta
