// Which of what was read becomes spans, and where.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "imports/imported.h"
#include "storage/transaction.h"

namespace orvanta {

/// Ranges that something is recorded in: by start, none overlapping or touching another.
using Occupied = std::vector<TimeRange>;

/// Of the store, in this range. `scan` reads as reports do, without holding up anybody.
std::optional<Occupied> occupiedIn(Database& db, const TimeRange& range);
Occupied occupiedIn(Transaction& change, const TimeRange& range);

struct ImportPlan {
  struct Span {
    double start = 0;
    double end = 0;
    const ImportedEvent* event = nullptr;
  };
  std::vector<Span> spans;  ///< by start, none overlapping another or what is recorded
  double seconds = 0;
};

/// Fills only what is empty, up to `now`; of events that overlap the one that begins first has the
/// time. Of an event that is cut, pieces of less than a minute are left out: they would only be the
/// seams between what was recorded. `events`, by start, outlive the plan.
ImportPlan planImport(const std::vector<ImportedEvent>& events, const Occupied& occupied,
                      double now);

/// From the first start to the last end.
TimeRange reachOf(const std::vector<ImportedEvent>& events);

}  // namespace orvanta
