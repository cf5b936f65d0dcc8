// Totals of a list of spans.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <cstdint>
#include <vector>

#include "reports/tally.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Seconds, not rounded, by category and project. Idle time counts in both but is no activity: it
/// is not in `active`.
struct Totals {
  struct ProjectTotal {
    int64_t key = 0;
    double seconds = 0;
  };

  /// Counts a classified span in. All spans have their texts in one pool. A span without duration
  /// still makes its entries.
  void add(const Ev& ev);

  double active = 0;
  TextTally byCat;
  Tally<ProjectTotal> byProj;
};

/// The totals together with the seconds of activity by application and by domain.
struct Agg : Totals {
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

  void add(const Ev& ev);

  Tally<AppTotal, TextHash> apps;
  Tally<DomainTotal, TextHash> domains;
};

/// The totals of a list.
Agg aggregate(const std::vector<Ev>& events);

/// Category to seconds, and the projects by falling seconds: "id", "name", "color", "duration". A
/// project that no longer exists is left out.
boost::json::object byCategoryJson(const TextTally& byCat);
boost::json::array byProjectJson(const Tally<Totals::ProjectTotal>& byProj,
                                 const Projects& projects);

/// What the dashboard calls totals: "active", "by_category", "by_project", "apps", "domains", the
/// lists by falling seconds.
boost::json::object aggJson(const Agg& agg, const Projects& projects);

}  // namespace orvanta
