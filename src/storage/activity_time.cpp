#include "storage/activity_time.h"

#include <algorithm>

namespace orvanta {

uint64_t hashOfActivity(const Ev& ev) {
  constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  uint64_t hash = static_cast<uint64_t>(ev.projectId.value_or(0)) * 2 + (ev.projectId ? 1 : 0);
  for (const auto text : {ev.app, ev.domain, ev.title, ev.url, ev.category}) {
    hash = (hash ^ (hash >> 32)) * kOdd + (text ? StringPool::hashOf(text.view()) : 1);
  }
  return hash;
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

}  // namespace orvanta
