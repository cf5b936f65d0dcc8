// The side of Orvanta: what is the active tab of this browser?
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace orvanta {

/// Prints the active tab of the browser with this identifier, of one process of it if `pid` is
/// given: its URL, a line feed, its title; nothing when no window that may be read is in front.
/// Returns 0; or, with a French text on standard error, 3 when there is no way to tell and
/// kTimedOutStatus when somebody did not answer. Asks the extension, and where there is none, the
/// accessibility tree. Answers within 150 ms as a rule; the process ends by itself after 0.7 s.
int printTab(std::string_view bundle, std::optional<int> pid);

/// The same, for a user who is connecting the browser: as long as nobody can tell, tries again
/// until `patience` is over. A browser that does not run is not waited for.
int testTab(std::string_view bundle, std::chrono::seconds patience = std::chrono::seconds(12));

}  // namespace orvanta
