#include "reports/period_groups.h"

#include <algorithm>

namespace orvanta {
namespace {

constexpr std::size_t kMost = 12;
constexpr double kNothing = 0.001;  // what rounding leaves of a difference

}  // namespace

void GroupTable::add(const PeriodBucket& bucket, const std::vector<CategorySum>& texts) {
  auto& parts = buckets_.emplace_back();
  double rest = bucket.active;
  const auto take = [&](const std::string& key, double seconds) {
    parts[key] += seconds;
    rest -= seconds;
  };
  switch (group_) {
    case PeriodGroup::Category:
      for (const auto& sum : bucket.byCategory) take(sum.category, sum.seconds);
      break;
    case PeriodGroup::Project:
      for (const auto& sum : bucket.byProject) take(std::to_string(sum.id), sum.seconds);
      break;
    case PeriodGroup::Client:
      for (const auto& sum : bucket.byClient) take(sum.client, sum.seconds);
      break;
    default:
      for (const auto& sum : texts) take(sum.category, sum.seconds);
  }
  if (rest > kNothing) parts[""] += rest;
  for (const auto& [key, seconds] : parts) all_[key] += seconds;
}

PeriodReport::Group GroupTable::named(const std::string& key, double seconds) const {
  PeriodReport::Group group{key, key, "", seconds};
  if (key.empty()) {
    if (group_ == PeriodGroup::Project) group.name = "Sans projet";
    if (group_ == PeriodGroup::Client) group.name = "Sans client";
    if (group_ == PeriodGroup::Site) group.name = "Hors des sites";
  } else if (group_ == PeriodGroup::Project) {
    const auto& project = projects_.at(std::stoll(key));
    group.name = project.name;
    group.color = project.color;
  }
  return group;
}

void GroupTable::finish(PeriodReport& report) const {
  std::vector<PeriodReport::Group> sorted;
  for (const auto& [key, seconds] : all_) {
    if (seconds > 0) sorted.push_back(named(key, seconds));
  }
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return a.seconds > b.seconds; });
  if (sorted.size() > kMost) {
    PeriodReport::Group rest{"", "Autres", "", 0};
    for (std::size_t i = kMost - 1; i < sorted.size(); ++i) rest.seconds += sorted[i].seconds;
    report.groupsInLast = sorted.size() - (kMost - 1);
    sorted.resize(kMost - 1);
    sorted.push_back(std::move(rest));
  }
  const std::size_t own = sorted.size() - (report.groupsInLast > 0 ? 1 : 0);
  for (std::size_t i = 0; i < buckets_.size(); ++i) {
    auto& parts = report.buckets[i].parts;
    parts.assign(sorted.size(), 0);
    for (const auto& [key, seconds] : buckets_[i]) {
      const auto at = std::find_if(
          sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(own),
          [&, name = key](const PeriodReport::Group& group) { return group.key == name; });
      const auto place = static_cast<std::size_t>(at - sorted.begin());
      if (place < sorted.size()) parts[place] += seconds;
    }
  }
  report.groups = std::move(sorted);
}

}  // namespace orvanta
