#include "reports/agg.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::array topCategories(const TextTally& cats) {
  constexpr std::size_t kMost = 5;
  json::array list;
  for (const auto* cat : cats.bySeconds(kMost)) {
    list.push_back(json::array{cat->key.view(), cat->seconds});
  }
  return list;
}

}  // namespace

void Totals::add(const Ev& ev) {
  const double seconds = ev.duration();
  byCat[ev.cat].seconds += seconds;
  if (ev.pid) byProj[*ev.pid].seconds += seconds;
  if (!ev.idle) active += seconds;
}

void Agg::add(const Ev& ev) {
  Totals::add(ev);
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

json::object byCategoryJson(const TextTally& byCat) {
  json::object object;
  for (const auto& cat : byCat.entries()) object[cat.key.view()] = cat.seconds;
  return object;
}

json::array byProjectJson(const Tally<Totals::ProjectTotal>& byProj, const Projects& projects) {
  json::array list;
  for (const auto* total : byProj.bySeconds()) {
    const auto project = projects.find(total->key);
    if (project == projects.end()) continue;
    list.push_back({{"id", total->key},
                    {"name", project->second.name},
                    {"color", project->second.color},
                    {"duration", total->seconds}});
  }
  return list;
}

json::object aggJson(const Agg& agg, const Projects& projects) {
  json::array apps;
  for (const auto* app : agg.apps.bySeconds()) {
    apps.push_back({{"name", app->key.view()},
                    {"duration", app->seconds},
                    {"cats", topCategories(app->cats)}});
  }
  json::array domains;
  for (const auto* domain : agg.domains.bySeconds()) {
    domains.push_back({{"name", domain->key.view()},
                       {"app", domain->app.view()},
                       {"duration", domain->seconds},
                       {"cats", topCategories(domain->cats)}});
  }
  return {{"active", agg.active},
          {"by_category", byCategoryJson(agg.byCat)},
          {"by_project", byProjectJson(agg.byProj, projects)},
          {"apps", std::move(apps)},
          {"domains", std::move(domains)}};
}

}  // namespace orvanta
