// Sums over a list of spans.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "reports/report.h"
#include "reports/shares.h"
#include "reports/tally.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Seconds by category and project, while they are being summed up. Idle time counts in both but is
/// no activity: it is not in `active`.
struct Sums {
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

/// The same together with the seconds of activity by application and by domain.
struct Agg : Sums {
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

  Shares<AppTotal> apps;
  Shares<DomainTotal> domains;
};

/// Lets the extent reach to a span of activity; an absence changes nothing.
inline void widen(Extent& extent, const Ev& ev) {
  if (ev.idle) return;
  extent.first = std::min(extent.first.value_or(ev.start), ev.start);
  extent.last = std::max(extent.last.value_or(ev.end), ev.end);
}

/// The sums of a list.
Agg aggregate(const std::vector<Ev>& events);

/// As reports have them. A project that no longer exists is left out.
std::vector<CategorySum> categorySums(const TextTally& byCat);
std::vector<ProjectSum> projectSums(const Tally<Sums::ProjectTotal>& byProj,
                                    const Projects& projects);
AppSum appSum(const Agg::AppTotal& total);
DomainSum domainSum(const Agg::DomainTotal& total);
Totals totalsOf(const Agg& agg, const Projects& projects);

}  // namespace orvanta
