// What was saved and what was not, for the user.
#pragma once

#include <optional>
#include <string>

#include "base/calendar.h"
#include "storage/salvage.h"

namespace orvanta {

/// Of a salvage that was made. `backupTime`: of the backup that filled what was missing, if any, in
/// Unix seconds.
std::string salvageSentence(const SalvageReport& report, const Calendar& calendar,
                            std::optional<double> backupTime);

}  // namespace orvanta
