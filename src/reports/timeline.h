// The day drawn twice: as a coarse band and as a list to work with.
#pragma once

#include <vector>

#include "reports/report.h"
#include "storage/ev.h"

namespace orvanta {

/// Runs of one category and project: spans of at least a second, without idle ones, that follow
/// each other within 3 seconds. `events` are classified and by start.
std::vector<Segment> segments(const std::vector<Ev>& events);

/// Runs of one application, domain, category, project and idle state that follow each other within
/// 5 seconds. Those that last less than `minSeconds` are left out and added to `brief`, idle ones
/// excepted. `events` are classified and by start.
std::vector<Block> blocks(const std::vector<Ev>& events, double minSeconds, Brief& brief);

}  // namespace orvanta
