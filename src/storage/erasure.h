// What is to be erased, in the store and in every copy of it alike.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "storage/value.h"

namespace orvanta {

/// Statements that erase something, to be run in their order in one transaction. Run again, they
/// find nothing more to do; on a copy in which spans have other ids they erase the same time.
struct Erasure {
  struct Step {
    std::string sql;
    Args args;
    bool ofChanges = false;  ///< not for a store that keeps no history of changes
  };
  std::vector<Step> steps;
};

/// Everything recorded in a range, absences included: spans within it are deleted, spans that reach
/// into it are cut, one that reaches beyond both ends is cut in two of which the first keeps the
/// id. Ends within a millisecond of the range's count as equal to them, so that no slivers are
/// left. Nothing for a range that is empty or not finite.
Erasure eraseRange(const TimeRange& range);

/// The same of several ranges; of one that lasts no time, the spans that last none there. Also what
/// the history of changes holds of them.
Erasure eraseTimes(const std::vector<TimeRange>& ranges);

/// Just these spans, which were recorded in these times, and what the history of changes holds of
/// the times.
Erasure eraseSpans(const std::vector<int64_t>& ids, const std::vector<TimeRange>& times);

/// The times in a copy of the store, whose history of changes is not looked through: whatever names
/// something leaves it. What is cut has other ids there.
Erasure eraseTimesInCopy(const std::vector<TimeRange>& ranges);

/// What the history of changes holds of these times, and of what was measured then.
Erasure forgetChanges(const std::vector<TimeRange>& times);

/// The titles and addresses of spans that ended before an instant (Unix seconds), with the changes
/// whose way back holds some.
Erasure stripTitlesBefore(double cutOff);

/// Erasures ask functions of ours; a connection that runs one is given them by this. run() does it
/// itself.
void addErasing(sqlite3* connection);

/// Runs it in the caller's transaction. SQLITE_OK, or the code of the first step that failed; the
/// connection then holds the message. An index that is named and that the file lacks is done
/// without.
int run(const Erasure& erasure, sqlite3* connection);

}  // namespace orvanta
