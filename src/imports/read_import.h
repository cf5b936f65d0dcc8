// Reads what other programs have recorded.
#pragma once

#include <optional>
#include <string_view>

#include "base/calendar.h"
#include "imports/imported.h"

namespace orvanta {

struct ImportChoice {
  std::optional<Mapping> mapping;  ///< of a table; guessed where it is absent
  std::optional<bool> monthFirst;
  double now = 0;  ///< what comes again in a calendar is told up to then, Unix seconds
};

/// A calendar, a list of events in JSON, or a table: whatever the text looks like. Our own export
/// is a table. `text` is valid UTF-8. Never throws; what cannot be used is counted by its reason.
Imported readImport(std::string_view text, const Calendar& calendar, const ImportChoice& choice);

// The three of them.
Imported readTable(std::string_view text, const Calendar& calendar, const ImportChoice& choice);
Imported readCalendarFile(std::string_view text, const Calendar& calendar, double now);
Imported readEvents(std::string_view text, const Calendar& calendar);

/// The columns by their names, in French or English.
Mapping guessedMapping(const std::vector<std::string>& names);

}  // namespace orvanta
