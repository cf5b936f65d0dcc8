#include "storage/activity_groups.h"

#include <algorithm>
#include <utility>

namespace orvanta {

uint64_t hashOfActivity(const Ev& ev) {
  constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  uint64_t hash = static_cast<uint64_t>(ev.projectId.value_or(0)) * 2 + (ev.projectId ? 1 : 0);
  for (const auto text : {ev.app, ev.domain, ev.title, ev.url, ev.category}) {
    hash = (hash ^ (hash >> 32)) * kOdd + (text ? StringPool::hashOf(text.view()) : 1);
  }
  return hash;
}

void addTime(std::vector<ActivityTime>& times, const ActivityTime& some) {
  // The newest is the one that most spans are added to.
  const auto time = std::find_if(times.rbegin(), times.rend(),
                                 [&](const ActivityTime& one) { return one.month == some.month; });
  if (time == times.rend()) {
    times.push_back(some);
    return;
  }
  if (some.first < time->first) {
    time->first = some.first;
    time->example = some.example;
  }
  time->seconds += some.seconds;
  time->spans += some.spans;
}

int Months::of(double instant) {
  constexpr double kYearOne = -62135596800;
  constexpr double kYear9999 = 253370764800;
  constexpr int kMonthsPerYear = 12;
  instant = std::clamp(instant, kYearOne, kYear9999);
  if (instant >= range_.start && instant < range_.end) return month_;
  auto date = calendar_.dateOf(instant);
  date.day = 1;
  const auto next =
      date.month == kMonthsPerYear ? Date{date.year + 1, 1, 1} : Date{date.year, date.month + 1, 1};
  range_ = {calendar_.startOf(date), calendar_.startOf(next)};
  month_ = date.year * kMonthsPerYear + date.month - 1;
  return month_;
}

uint32_t ActivityGroups::placeOf(const Ev& ev) {
  const auto [at, isNew] = places_.try_emplace(hashOfActivity(ev), kUnwanted);
  if (!isNew) return at->second;
  Ev activity = ev;
  activity.id = 0;
  activity.start = activity.end = 0;
  activity.bundle = {};
  if (!wants_(activity)) return kUnwanted;
  if (ev.title) activity.title = texts_.intern(ev.title.view());
  if (ev.url) activity.url = texts_.intern(ev.url.view());
  at->second = static_cast<uint32_t>(groups_.size());
  groups_.push_back({activity, {}});
  return at->second;
}

void ActivityGroups::add(const Ev& ev) {
  if (ev.idle) return;
  const auto place = placeOf(ev);
  if (place == kUnwanted) return;
  addTime(groups_[place].times, {.month = months_.of(ev.start),
                                 .seconds = ev.duration(),
                                 .spans = 1,
                                 .first = ev.start,
                                 .example = ev.id});
}

void ActivityGroups::tell(const Take& take) const {
  for (const auto& [activity, times] : groups_) take(activity, times);
}

}  // namespace orvanta
