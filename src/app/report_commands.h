// `orvanta --report PERIOD`, `orvanta --sheet PERIOD`: what was done, and what is billed of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reports/analytics.h"
#include "storage/project.h"

namespace orvanta {

// Each prints to standard output and yields the exit status: 0, 1 when something could not be read
// or written, 2 when the words are wrong; both with a French message on standard error. The only
// word is a period, see parsePeriod().

/// Prints what may be anything as UTF-8; without being `whole` that is said, and 1.
int printText(const std::string& text, bool whole);

/// The period as text to read, in French.
int reportCommand(const Analytics& analytics, const Calendar& calendar,
                  const std::vector<std::string>& words);

/// The timesheet, of one client where that is given, which a project must have; `format` is "text",
/// "csv", "csv_plain", "json" or "ics".
int sheetCommand(const Analytics& analytics, const Clock& clock, const Projects& projects,
                 const std::vector<std::string>& words, const std::optional<std::string>& client,
                 const std::string& format);

}  // namespace orvanta
