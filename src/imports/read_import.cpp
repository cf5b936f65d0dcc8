#include "imports/read_import.h"

#include "base/text.h"

namespace orvanta {

Imported readImport(std::string_view text, const Calendar& calendar, const ImportChoice& choice) {
  const auto pinned = calendar.pinned();
  const auto first = text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  constexpr std::string_view kCalendar = "begin:vcalendar";
  if (lowerCase(first.substr(0, kCalendar.size())) == kCalendar) {
    return readCalendarFile(text, pinned, choice.now);
  }
  if (first.starts_with('[') || first.starts_with('{')) return readEvents(text, pinned);
  return readTable(text, pinned, choice);
}

}  // namespace orvanta
