// The recorded spans of a range of time.
#pragma once

#include <memory>
#include <vector>

#include "base/calendar.h"
#include "storage/database.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Spans with the texts and projects that they refer to. Moves, but does not copy.
struct Spans {
  std::unique_ptr<StringPool> pool = std::make_unique<StringPool>();
  std::vector<Ev> list;
  Projects projects;
};

/// The spans that overlap `range`, clipped to it and classified, by stored start. One that only
/// touches the range is not among them. Costs what the range holds, whatever the history. Empty
/// when the store cannot be read.
Spans loadSpans(Database& db, const TimeRange& range);

}  // namespace orvanta
