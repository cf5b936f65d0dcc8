// A category and a project by hand for a stretch of time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "storage/transaction.h"

namespace orvanta {

/// What an assignment touched.
struct AssignedTime {
  int64_t spans = 0;
  double seconds = 0;
};

/// Gives all activity in `range` this category and project (none of it where both are absent).
/// Spans that cross a border are split there; what lies outside keeps what it had. A border within
/// a millisecond of a span's end is taken to be that end. Idle spans are left alone, and so is
/// everything when the range is empty.
AssignedTime assignRange(Transaction& change, TimeRange range,
                         const std::optional<std::string>& category,
                         std::optional<int64_t> projectId);

}  // namespace orvanta
