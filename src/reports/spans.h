// The recorded spans of a range of time.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/calendar.h"
#include "storage/database.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Shows to `visit`, by stored start, the spans that overlap `range`, clipped to it and classified.
/// One that only touches the range is not among them. Costs what the range holds, whatever the
/// history; shows nothing when the store cannot be read. The texts of a span live in `pool`.
/// `visit` must not call into the database.
void eachSpan(Database& db, const TimeRange& range, StringPool& pool, const Projects& projects,
              const std::function<void(const Ev&)>& visit);

/// Spans with the texts and projects that they refer to. Moves, but does not copy.
struct Spans {
  std::unique_ptr<StringPool> pool = std::make_unique<StringPool>();
  std::vector<Ev> list;
  Projects projects;
};

/// All of eachSpan's, for reports that go over them more than once.
Spans loadSpans(Database& db, const TimeRange& range);

}  // namespace orvanta
