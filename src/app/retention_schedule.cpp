#include "app/retention_schedule.h"

namespace orvanta {

bool retentionDue(double now, double applied, const Calendar& calendar) {
  constexpr int64_t kHour = 3600;
  constexpr int64_t kDay = 86400;
  constexpr int64_t kQuietHour = 4;
  const auto wall = calendar.wallSeconds(now);
  const auto hour = (wall - floorDivide(wall, kDay) * kDay) / kHour;
  return hour == kQuietHour || now - applied >= static_cast<double>(kDay);
}

}  // namespace orvanta
