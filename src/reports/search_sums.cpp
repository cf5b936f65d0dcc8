#include "reports/search_sums.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cmath>
#include <iterator>
#include <utility>

#include "storage/activity_chunk.h"

namespace orvanta {
namespace {

constexpr std::size_t kMostSubjects = 6;
constexpr std::size_t kMostRows = 12;

double finite(double seconds) {
  return std::isfinite(seconds) ? seconds : 0;
}

// By what rows are told apart: not by address, of which one title may have many.
uint64_t rowOf(const Ev& ev) {
  Ev row = ev;
  row.url = {};
  row.category = ev.cat;
  row.projectId = ev.pid;
  return hashOfActivity(row);
}

Found::Row rowFrom(const Ev& ev, const Projects& projects) {
  const bool known = ev.pid && projects.contains(*ev.pid);
  return {.start = ev.start,
          .end = ev.start,
          .app = ev.app.str(),
          .domain = ev.domain.optional(),
          .title = ev.title.optional(),
          .url = ev.url.optional(),
          .cat = ev.cat.str(),
          .pid = known ? ev.pid : std::nullopt};
}

}  // namespace

void SearchSums::add(double first, double seconds) {
  seconds = finite(seconds);
  seconds_ += seconds;
  first_ = std::min(first_.value_or(first), first);
  const auto month = months_.of(first);
  if (!latest_.second || latest_.first != month) latest_ = {month, &byMonth_[month]};
  *latest_.second += seconds;
}

Found SearchSums::found() const {
  Found found{.seconds = seconds_, .first = first_};
  for (const auto& [number, seconds] : byMonth_) found.months.push_back({number, seconds});
  for (const auto& [subject, seconds] : subjects_) {
    found.subjects.push_back({subject.kind, subject.name, subject.project, finite(seconds)});
  }
  std::stable_sort(found.subjects.begin(), found.subjects.end(),
                   [](const auto& a, const auto& b) { return a.seconds > b.seconds; });
  if (found.subjects.size() > kMostSubjects) found.subjects.resize(kMostSubjects);
  return found;
}

// A day in UTC has parts of two local ones.
void DayLister::list(const std::vector<int64_t>& days, const Each& each) {
  constexpr double kInstant = 0.001;
  auto before = before_;
  for (auto day = days.rbegin(); day != days.rend(); ++day) {
    for (const double instant : {startOfDay(*day + 1) - kInstant, startOfDay(*day)}) {
      const auto date = calendar_.dateOf(instant);
      if (before && date >= *before) continue;
      more_ = days_.size() == most_;
      if (more_) return;
      add(date, each);
      before = date;
    }
  }
}

void DayLister::add(const Date& date, const Each& each) {
  Found::Day day{.date = date};
  boost::unordered_flat_map<uint64_t, std::size_t> places;
  each(calendar_.dayBounds(date), [&](const Ev& ev) {
    const auto [at, isNew] = places.try_emplace(rowOf(ev), day.rows.size());
    if (isNew) day.rows.push_back(rowFrom(ev, projects_));
    auto& row = day.rows[at->second];
    const double end = std::isfinite(ev.end) ? std::max(ev.start, ev.end) : ev.start;
    row.end = std::max(row.end, end);
    row.seconds += end - ev.start;
    row.ids.push_back(ev.id);
    day.seconds += end - ev.start;
    last_ = std::max(last_.value_or(end), end);
  });
  if (day.rows.empty()) return;
  if (day.rows.size() > kMostRows) {
    day.more = day.rows.size() - kMostRows;
    const auto most = day.rows.begin() + static_cast<std::ptrdiff_t>(kMostRows);
    std::nth_element(day.rows.begin(), most, day.rows.end(),
                     [](const auto& a, const auto& b) { return a.seconds > b.seconds; });
    day.rows.erase(most, day.rows.end());
    std::stable_sort(day.rows.begin(), day.rows.end(),
                     [](const auto& a, const auto& b) { return a.start < b.start; });
  }
  days_.push_back(std::move(day));
}

void DayLister::addTo(Found& found) {
  found.days = std::move(days_);
  found.more = more_;
  if (!before_) found.last = last_;
}

}  // namespace orvanta
