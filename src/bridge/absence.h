// What the store keeps about absences besides the absences themselves.
#pragma once

#include <vector>

#include "base/calendar.h"
#include "storage/database.h"

namespace orvanta::absence {

/// Minutes of absence from which on the user is asked for what they were; 0: never.
double askMinutes(Database& db);
Written setAskMinutes(Database& db, int64_t minutes);

/// Absences that are to stay what they are; joined().
std::vector<TimeRange> skipped(Database& db);
/// The setting that makes these some of them. Those that ended a year before `now` are left out.
SettingTexts skipping(Database& db, std::vector<TimeRange> ranges, double now);

}  // namespace orvanta::absence
