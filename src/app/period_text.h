// A period as text to be read, or read aloud.
#pragma once

#include <string>

#include "reports/period.h"

namespace orvanta {

/// In French, one fact a line, nothing in columns.
std::string periodText(const PeriodReport& report, const Calendar& calendar);

}  // namespace orvanta
