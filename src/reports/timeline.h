// The day drawn twice: as a coarse band and as a list to work with.
#pragma once

#include <boost/json/array.hpp>
#include <vector>

#include "storage/ev.h"

namespace orvanta {

/// Runs of one category and project: spans of at least a second, without idle ones, that follow
/// each other within 3 seconds. Each has "start", "end", "cat", "pid" and "top", its three largest
/// domains (or applications). `events` are classified and by start.
boost::json::array segments(const std::vector<Ev>& events);

/// Runs of one application, domain, category, project and idle state that follow each other within
/// 5 seconds. Those that last less than `minSeconds` are left out, idle ones excepted. Each has
/// "start", "end", "duration", "app", "domain", "cat", "pid", "idle", "ids", "manual" and "title",
/// the title seen longest. `events` are classified and by start.
boost::json::array blocks(const std::vector<Ev>& events, double minSeconds);

}  // namespace orvanta
