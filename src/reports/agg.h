// Totals of a list of spans.
#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <vector>

#include "reports/tally.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Seconds, not rounded, by whatever a report asks for. Idle time counts in `byCat` and `byProj`
/// but is no activity: it is not in `active`, `apps` or `domains`.
struct Agg {
  struct ProjectTotal {
    int64_t key = 0;
    double seconds = 0;
  };
  struct AppTotal {
    Text key;
    double seconds = 0;
    TextTally cats;
  };
  struct DomainTotal {
    Text key;
    double seconds = 0;
    TextTally cats;
    Text app;  ///< of the first span of the domain
  };

  double active = 0;
  TextTally byCat;
  Tally<ProjectTotal> byProj;
  Tally<AppTotal, TextHash> apps;
  Tally<DomainTotal, TextHash> domains;
};

/// One pass over classified spans of one pool. A span without duration still makes its entries.
Agg aggregate(const std::vector<Ev>& events);

/// What the dashboard calls totals: "active", "by_category", "by_project", "apps", "domains", the
/// lists by falling seconds. A project that no longer exists is left out.
boost::json::object aggJson(const Agg& agg, const Projects& projects);

}  // namespace orvanta
