// A category and a project by hand for a stretch of time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "storage/database.h"

namespace orvanta {

/// Gives all activity in `range` this category and project (none of it where both are absent).
/// Spans that cross a border are split there; what lies outside keeps what it had. Idle spans are
/// left alone, and so is everything when the range is empty.
void assignRange(Database& db, const TimeRange& range, const std::optional<std::string>& category,
                 std::optional<int64_t> projectId);

}  // namespace orvanta
