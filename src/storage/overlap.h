// Which recorded spans overlap a range of time.
#pragma once

#include <string>
#include <string_view>

#include "base/calendar.h"
#include "storage/value.h"

namespace orvanta {

/// Asked plainly ("end > ? AND start < ?"), SQLite walks the history from its first row or to its
/// last. So the spans are looked for in two places, each a short walk along an index: the few long
/// ones that began well before the range, and all that began shortly before it or in it. Run one
/// after the other with the same arguments, the two give every overlapping span once, by start. One
/// that only touches the range is not among them.
struct OverlapQuery {
  std::string longBefore;
  std::string fromShortlyBefore;

  /// Yields these columns of `events`; `condition`, if any, begins with "AND".
  explicit OverlapQuery(std::string_view columns, std::string_view condition = "");

  /// What both are run with.
  static Args args(const TimeRange& range);
};

}  // namespace orvanta
