// The store's tables, its settings and how a file of any age is brought up to date.
#pragma once

#include <map>
#include <string>

namespace orvanta {

class Database;

/// Every setting that the user may change, with its default. Values are text; booleans are "1" and
/// "0", lists are JSON.
const std::map<std::string, std::string>& defaultSettings();

/// Spans longer than this many seconds are found through an index of their own, see
/// SpanReader. A night away from the machine is one; a working day has none.
inline constexpr double kLongSpan = 14400;

/// Creates what is missing, adds columns of later versions, fills missing settings and drops what
/// no version reads any more. Never overwrites a stored value; safe to repeat at every start.
void migrate(Database& db);

}  // namespace orvanta
