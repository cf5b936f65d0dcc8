// Moments that were added by hand, as they are changed later.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "classify/moments.h"

namespace orvanta {

/// The spans of moments that follow each other under one note.
struct KeptMoment {
  std::vector<int64_t> ids;  ///< by start
  TimeRange time;            ///< from the first start to the last end
  std::optional<std::string> title;
};

/// Those of these spans, by start; spans of anything else are passed over.
std::vector<KeptMoment> momentsAmong(Database& db, const std::vector<int64_t>& ids);

/// Gives a moment this note, and this time: what it gives up is empty then, what it gains is what
/// addMoment() fills, with the category and the project of its first span. Yields what it gained.
FilledTime editMoment(Transaction& change, const KeptMoment& moment,
                      const std::optional<std::string>& title, const TimeRange& time);

}  // namespace orvanta
