#include "reports/wall_hours.h"

#include <algorithm>

namespace orvanta {
namespace {

constexpr int64_t kHour = 3600;
constexpr int64_t kDay = 86400;
constexpr double kQuarter = 900;  // zones change on quarters of an hour

}  // namespace

void WallHours::add(const TimeRange& day, double start, double end) {
  if (day.start != day_.start || day.end != day_.end) enter(day);
  if (start < slotStart_) {
    slot_ = 0;
    slotStart_ = day_.start;
  }
  while (start < end && slot_ < slots_.size()) {
    const auto& slot = slots_[slot_];
    if (start < slot.end) {
      const double until = std::min(end, slot.end);
      sums_[weekday_][slot.hour] += until - start;
      start = until;
      if (until < slot.end) return;
    }
    slotStart_ = slot.end;
    ++slot_;
  }
}

void WallHours::enter(const TimeRange& day) {
  day_ = day;
  slots_.clear();
  slot_ = 0;
  slotStart_ = day.start;
  const auto date = calendar_.dateOf(day.start);
  weekday_ = static_cast<std::size_t>(date.monday().daysUntil(date));
  const auto hourAt = [&](double instant) {
    const auto wall = calendar_.wallSeconds(instant);
    return static_cast<std::size_t>((wall - floorDivide(wall, kDay) * kDay) / kHour);
  };
  const bool usual = day.end - day.start == static_cast<double>(kDay) && hourAt(day.start) == 0;
  const double step = usual ? static_cast<double>(kHour) : kQuarter;
  std::size_t hour = 0;
  for (double at = day.start; at < day.end; at += step) {
    hour = usual ? slots_.size() : hourAt(at);
    const double end = std::min(at + step, day.end);
    if (slots_.empty() || slots_.back().hour != hour) slots_.push_back({end, hour});
    slots_.back().end = end;
  }
}

}  // namespace orvanta
