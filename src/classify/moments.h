// Moments that the user adds by hand: a meeting, a call, a site visit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "storage/transaction.h"

namespace orvanta {

struct Moment {
  std::optional<std::string> title;  ///< the user's note
  std::optional<std::string> category;
  std::optional<int64_t> project;
};

/// What became of the ranges.
struct FilledTime {
  int64_t spans = 0;   ///< of the moment
  double seconds = 0;  ///< that they last
  double taken = 0;    ///< in which something was recorded
};

/// Gives to the moment what is idle or empty in these ranges, which are joined(). Idle spans that
/// cross a border are split there, and the part within becomes the moment's; other spans stay as
/// they are. Less than a second between two spans is left empty. The ids of new rows are below 0
/// and drawn by lot: what the capture records while the change is taken back gets none of them.
FilledTime addMoment(Transaction& change, const std::vector<TimeRange>& ranges,
                     const Moment& moment);

}  // namespace orvanta
