// When the retention is applied again.
#pragma once

#include "base/calendar.h"

namespace orvanta {

/// Asked once an hour: whether it is the hour from 04:00, or a day has passed since it was
/// `applied`, as when the machine slept through that hour. Unix seconds.
bool retentionDue(double now, double applied, const Calendar& calendar = {});

}  // namespace orvanta
