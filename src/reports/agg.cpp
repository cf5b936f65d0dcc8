#include "reports/agg.h"

namespace orvanta {
namespace {

std::vector<CategorySum> largest(const TextTally& cats) {
  constexpr std::size_t kMost = 5;
  std::vector<CategorySum> list;
  for (const auto* cat : cats.bySeconds(kMost)) list.push_back({cat->key.str(), cat->seconds});
  return list;
}

}  // namespace

void Sums::add(const Ev& ev) {
  const double seconds = ev.duration();
  byCat[ev.cat].seconds += seconds;
  if (ev.pid) byProj[*ev.pid].seconds += seconds;
  if (!ev.idle) active += seconds;
}

void Agg::add(const Ev& ev) {
  Sums::add(ev);
  if (ev.idle) return;

  const double seconds = ev.duration();
  auto& app = apps[ev.app];
  app.seconds += seconds;
  app.cats[ev.cat].seconds += seconds;
  if (ev.domain) {
    auto& domain = domains[ev.domain];
    if (!domain.app) domain.app = ev.app;
    domain.seconds += seconds;
    domain.cats[ev.cat].seconds += seconds;
  }
}

Agg aggregate(const std::vector<Ev>& events) {
  Agg agg;
  for (const auto& ev : events) agg.add(ev);
  return agg;
}

std::vector<CategorySum> categorySums(const TextTally& byCat) {
  std::vector<CategorySum> list;
  for (const auto& cat : byCat.entries()) list.push_back({cat.key.str(), cat.seconds});
  return list;
}

std::vector<ProjectSum> projectSums(const Tally<Sums::ProjectTotal>& byProj,
                                    const Projects& projects) {
  std::vector<ProjectSum> list;
  for (const auto* total : byProj.bySeconds()) {
    const auto found = projects.find(total->key);
    if (found == projects.end()) continue;
    const auto& project = found->second;
    list.push_back({total->key, project.name, project.color, total->seconds});
  }
  return list;
}

AppSum appSum(const Agg::AppTotal& total) {
  return {total.key.str(), total.seconds, largest(total.cats)};
}

DomainSum domainSum(const Agg::DomainTotal& total) {
  return {{total.key.str(), total.seconds, largest(total.cats)}, total.app.str()};
}

Totals totalsOf(const Agg& agg, const Projects& projects) {
  Totals totals{.active = agg.active,
                .byCategory = categorySums(agg.byCat),
                .byProject = projectSums(agg.byProj, projects)};
  for (const auto* app : agg.apps.bySeconds()) totals.apps.push_back(appSum(*app));
  for (const auto* domain : agg.domains.bySeconds()) totals.domains.push_back(domainSum(*domain));
  return totals;
}

}  // namespace orvanta
