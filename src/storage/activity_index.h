// The index of activities: what the spans of past days add up to, so that nobody reads them again.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "storage/activity_chunk.h"
#include "storage/connection.h"
#include "storage/database.h"

namespace orvanta {

// A folder beside the store, readable by the user alone, that may be removed at any time. What
// tells whether it holds true is in the store: the table `indexed_days` has a random stamp for a
// day, and triggers remove it when a span of that day changes, whoever changes it. So all states of
// a store in which a day has one stamp, also those that a backup brings back, have the same spans
// on it. A file holds what a day adds up to, and its stamp: where the store has another one or
// none, the spans themselves are read. The texts are in a list of their own: a file of days is only
// removed, or made anew after another state of its days, when what no other one uses is out of
// that.

std::filesystem::path activityFolder(const DataLocation& where);
/// The file of the days from chunk * kChunkDays on.
std::filesystem::path activityFile(const DataLocation& where, int64_t chunk);
/// What all of these are about.
ActivityList activityList(const DataLocation& where);

/// The days that have a stamp, in their order. `ask` is Database::scan or the like without
/// parameters. None where the store has no such table; absent when that could not be read.
using AskStore =
    std::function<bool(std::string_view sql, const std::function<void(const Cursor&)>& visit)>;
std::optional<StampedDays> readStamps(const AskStore& ask);

/// Brings the index up to date. One process does, the holder of the DataLock. Used by one thread at
/// a time, the one that erases, too: what was read before it was erased would come back.
class ActivityIndex {
 public:
  /// `db` outlives it.
  explicit ActivityIndex(Database& db, Clock clock = wallClock)
      : db_(db), clock_(std::move(clock)) {}

  /// Looks at the files in turn until one is out of date, and makes that one anew, in some
  /// milliseconds at low priority. True when there may be more to do. Today's spans are left to the
  /// store.
  bool step();

  /// Removes what does not hold true for the store, files and texts, so that nothing erased is
  /// left. False when something cannot be removed.
  bool removeStale();
  /// The same, in little time where no file is out of date.
  bool removeIfStale();

 private:
  using Facts = ActivityChunk::Facts;
  // What files are to agree with.
  struct Truth {
    StampedDays stamps;
    std::vector<uint64_t> parts;
    bool agrees(const std::optional<Facts>& facts) const;
  };
  struct Files {
    std::vector<std::filesystem::path> good, stale;
  };
  std::optional<Truth> truth(Connection& store) const;
  Files files() const;
  const std::optional<Facts>& known(int64_t chunk);
  bool upToDate(int64_t chunk, const Truth& truth, int64_t today);
  bool make(Connection& store, int64_t chunk, int64_t today);

  Database& db_;
  const Clock clock_;
  std::map<int64_t, std::optional<Facts>> known_;  // by chunk; absent of a file that is no good
  std::optional<ActivityNumbers> numbers_;         // as long as there is more to do
  int64_t next_ = 0;                               // chunk to be looked at
};

}  // namespace orvanta
