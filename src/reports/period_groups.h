// What the bars of a period are stacked from.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "reports/period.h"
#include "storage/project.h"

namespace orvanta {

/// Gathers the parts of the buckets and brings them in one order: the largest of the whole period
/// first, what is too small together, so that all bars are stacked alike. The parts of a bucket
/// make up its active time.
class GroupTable {
 public:
  GroupTable(PeriodGroup group, const Projects& projects) : group_(group), projects_(projects) {}

  /// The next bucket; `texts` are its applications or sites when these are the group.
  void add(const PeriodBucket& bucket, const std::vector<CategorySum>& texts);
  /// Fills the report's groups and the parts of its buckets.
  void finish(PeriodReport& report) const;

 private:
  using Parts = std::map<std::string, double>;

  PeriodReport::Group named(const std::string& key, double seconds) const;

  const PeriodGroup group_;
  const Projects& projects_;
  std::vector<Parts> buckets_;
  Parts all_;
};

}  // namespace orvanta
