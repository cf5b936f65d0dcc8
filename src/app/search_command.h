// `orvanta --search TEXT`: when something was done.
#pragma once

#include <string>
#include <vector>

#include "reports/analytics.h"

namespace orvanta {

/// What was found, in French: how long it took, the first and last time, and the newest days.
std::string foundText(const Found& found, const Calendar& calendar);

/// Looks for the words, and prints to standard output. Yields the exit status: 0, 1 when nothing
/// was found or something could not be read, 2 without words; the last two with a French message on
/// standard error.
int searchCommand(const Analytics& analytics, const Calendar& calendar,
                  const std::vector<std::string>& words);

}  // namespace orvanta
