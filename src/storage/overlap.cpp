#include "storage/overlap.h"

#include <fmt/format.h>

#include "storage/schema.h"

namespace orvanta {

// The unary plus keeps the planner off the other indexes. A span that began more than kLongSpan
// before the range and reaches into it is a long one, so nothing is missed.
OverlapQuery::OverlapQuery(std::string_view columns, std::string_view condition)
    : longBefore(fmt::format("SELECT {} FROM events INDEXED BY idx_events_long "
                             "WHERE {} AND end > ?1 AND +start < ?2 "
                             "AND +start < ?3 {} ORDER BY start, id",
                             columns, kIsLong, condition)),
      fromShortlyBefore(fmt::format("SELECT {} FROM events WHERE +end > ?1 AND start < ?2 "
                                    "AND start >= ?3 {} ORDER BY start, id",
                                    columns, condition)) {}

Args OverlapQuery::args(const TimeRange& range) {
  return {range.start, range.end, range.start - kLongSpan};
}

}  // namespace orvanta
