#include "reports/period.h"

#include <algorithm>
#include <map>
#include <utility>

#include "reports/agg.h"
#include "reports/local_days.h"
#include "reports/period_groups.h"
#include "reports/shares.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

constexpr std::size_t kMostShares = 50;

struct DaySums : Sums {
  Extent extent;
  std::vector<TimeRange> absences;

  void add(const Ev& ev) {
    Sums::add(ev);
    widen(extent, ev);
  }

  double pauses() const {
    if (!extent.first || !extent.last) return 0;
    double seconds = 0;
    for (const auto& [start, end] : absences) {
      seconds += std::max(0.0, std::min(end, *extent.last) - std::max(start, *extent.first));
    }
    return seconds;
  }
};

void addTo(Sums& sums, const Sums& more) {
  sums.active += more.active;
  for (const auto& cat : more.byCat.entries()) sums.byCat[cat.key].seconds += cat.seconds;
  for (const auto& project : more.byProj.entries()) {
    sums.byProj[project.key].seconds += project.seconds;
  }
}

void widen(Extent& extent, const Extent& more) {
  if (!more.first || !more.last) return;
  extent.first = std::min(extent.first.value_or(*more.first), *more.first);
  extent.last = std::max(extent.last.value_or(*more.last), *more.last);
}

std::vector<ClientSum> byClient(const std::vector<ProjectSum>& sums, const Projects& projects) {
  std::map<std::string, double> seconds;
  for (const auto& sum : sums) {
    const auto& client = projects.at(sum.id).client;
    if (!client.empty()) seconds[client] += sum.seconds;
  }
  std::vector<ClientSum> list;
  list.reserve(seconds.size());
  for (const auto& [client, sum] : seconds) list.push_back({client, sum});
  std::stable_sort(list.begin(), list.end(),
                   [](const auto& a, const auto& b) { return a.seconds > b.seconds; });
  return list;
}

void fill(PeriodSums& sums, const Sums& from, const Projects& projects) {
  sums.active = from.active;
  sums.byCategory = categorySums(from.byCat);
  sums.byProject = projectSums(from.byProj, projects);
  sums.byClient = byClient(sums.byProject, projects);
  sums.withoutProject = sums.active;
  for (const auto& project : sums.byProject) sums.withoutProject -= project.seconds;
}

using AppShares = Shares<Agg::AppTotal>;

void addTo(AppShares& apps, const Ev& ev) {
  auto& app = apps[ev.app];
  app.seconds += ev.duration();
  app.cats[ev.cat].seconds += ev.duration();
}

// One walk over the spans of the range.
class PeriodWalk {
 public:
  PeriodWalk(const Calendar& calendar, const PeriodReport& report)
      : group_(report.group), days_(calendar, report.dates), hours_(calendar), sums_(days_.size()) {
    for (const auto& piece : pieces(report.dates, report.by)) {
      bucketOf_.resize(bucketOf_.size() + static_cast<std::size_t>(piece.days()), texts_.size());
      texts_.emplace_back();
    }
  }

  void add(const Ev& ev) {
    days_.split(ev, [&](std::size_t day, const Ev& part) { addTo(day, part); });
  }

  void finish(PeriodReport& report, const Projects& projects) const;

 private:
  void addTo(std::size_t day, const Ev& ev);
  void finishBuckets(PeriodReport& report, const Projects& projects) const;
  void finishShares(PeriodReport& report) const;

  const PeriodGroup group_;
  LocalDays days_;
  WallHours hours_;
  std::vector<DaySums> sums_;
  AppShares apps_;
  Shares<Agg::DomainTotal> domains_;
  std::vector<std::size_t> bucketOf_;       // by day
  std::vector<Shares<TextSeconds>> texts_;  // by bucket, of a group by application or site
};

void PeriodWalk::addTo(std::size_t day, const Ev& ev) {
  auto& sums = sums_[day];
  if (ev.idle) {
    sums.absences.push_back({ev.start, ev.end});
    return;
  }
  sums.add(ev);
  hours_.add(days_.bounds(day), ev.start, ev.end);
  const double seconds = ev.duration();
  orvanta::addTo(apps_, ev);
  if (group_ == PeriodGroup::App) texts_[bucketOf_[day]][ev.app].seconds += seconds;
  if (!ev.domain) return;
  auto& domain = domains_[ev.domain];
  if (!domain.app) domain.app = ev.app;
  domain.seconds += seconds;
  domain.cats[ev.cat].seconds += seconds;
  if (group_ == PeriodGroup::Site) texts_[bucketOf_[day]][ev.domain].seconds += seconds;
}

void PeriodWalk::finish(PeriodReport& report, const Projects& projects) const {
  Sums all;
  for (std::size_t day = 0; day < sums_.size(); ++day) {
    const auto& sums = sums_[day];
    orvanta::addTo(all, sums);
    widen(report.extent, sums.extent);
    report.pauses += sums.pauses();
    if (sums.active > 0) ++report.daysActive;
    if (sums.active > (report.bestDay ? report.bestDay->active : 0)) {
      report.bestDay = {days_.date(day), sums.active};
    }
  }
  report.bounds = days_.range();
  report.heat = hours_.sums();
  fill(report, all, projects);
  finishShares(report);
  finishBuckets(report, projects);
}

void PeriodWalk::finishShares(PeriodReport& report) const {
  const auto take = [](const auto& shares, auto& list, PeriodReport::Rest& rest, const auto& made) {
    for (const auto* share : shares.bySeconds()) {
      if (list.size() < kMostShares) {
        list.push_back(made(*share));
      } else {
        ++rest.count;
        rest.seconds += share->seconds;
      }
    }
  };
  const auto app = [](const Agg::AppTotal& total) { return appSum(total); };
  take(apps_, report.apps, report.otherApps, app);
  const auto domain = [](const Agg::DomainTotal& total) { return domainSum(total); };
  take(domains_, report.domains, report.otherDomains, domain);
}

void PeriodWalk::finishBuckets(PeriodReport& report, const Projects& projects) const {
  std::size_t day = 0;
  GroupTable groups(report.group, projects);
  for (const auto& piece : pieces(report.dates, report.by)) {
    auto& bucket = report.buckets.emplace_back();
    bucket.dates = piece;
    bucket.bounds.start = days_.bounds(day).start;
    Sums all;
    const auto index = bucketOf_[day];
    for (int i = 0; i < piece.days(); ++i, ++day) {
      orvanta::addTo(all, sums_[day]);
      widen(bucket.extent, sums_[day].extent);
      bucket.pauses += sums_[day].pauses();
    }
    bucket.bounds.end = days_.bounds(day - 1).end;
    fill(bucket, all, projects);
    std::vector<CategorySum> texts;
    for (const auto& [key, seconds] : texts_[index].entries())
      texts.push_back({key.str(), seconds});
    groups.add(bucket, texts);
  }
  groups.finish(report);
}

PeriodReport::Before before(SpanReader& reader, const Calendar& calendar, double now,
                            const PeriodReport& report) {
  PeriodReport::Before before;
  before.dates = rangeBefore(report.dates);
  auto range = before.dates.bounds(calendar);
  if (report.running) range.end = samePointBefore(calendar, report.dates, now);
  before.until = range.end;
  Sums sums;
  AppShares apps;
  reader.each(range, [&](const Ev& ev) {
    if (ev.idle) return;
    sums.add(ev);
    addTo(apps, ev);
  });
  fill(before, sums, reader.projects());
  for (const auto* app : apps.bySeconds()) before.apps.push_back(appSum(*app));
  return before;
}

}  // namespace

PeriodBy usualBy(const DateRange& range) {
  constexpr int kMostByDay = 45;
  constexpr int kMostByWeek = 190;
  if (range.days() <= kMostByDay) return PeriodBy::Day;
  return range.days() <= kMostByWeek ? PeriodBy::Week : PeriodBy::Month;
}

std::vector<DateRange> pieces(const DateRange& range, PeriodBy by) {
  std::vector<DateRange> list;
  for (auto from = range.from; from <= range.to; from = list.back().to.plusDays(1)) {
    auto to = from;
    if (by == PeriodBy::Week) to = weekOf(from).to;
    if (by == PeriodBy::Month) to = monthOf(from).to;
    list.push_back({from, std::min(to, range.to)});
  }
  return list;
}

PeriodReport periodReport(SpanReader& reader, const Calendar& calendar, double now,
                          const PeriodQuestion& question) {
  PeriodReport report;
  report.dates = question.range;
  report.by = question.by.value_or(usualBy(question.range));
  report.group = question.group;
  report.running = question.range.holds(calendar.dateOf(now));
  PeriodWalk walk(calendar, report);
  reader.each(question.range.bounds(calendar), [&](const Ev& ev) { walk.add(ev); });
  walk.finish(report, reader.projects());
  if (question.compare) report.before = before(reader, calendar, now, report);
  report.whole = reader.whole();
  return report;
}

}  // namespace orvanta
