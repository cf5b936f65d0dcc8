#include "reports/agg.h"

#include <boost/json/array.hpp>

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

json::array projectList(const Tally<Agg::ProjectTotal>& totals, const Projects& projects) {
  json::array list;
  for (const auto* total : totals.bySeconds()) {
    const auto project = projects.find(total->key);
    if (project == projects.end()) continue;
    list.push_back({{"id", total->key},
                    {"name", project->second.name},
                    {"color", project->second.color},
                    {"duration", total->seconds}});
  }
  return list;
}

}  // namespace

Agg aggregate(const std::vector<Ev>& events) {
  Agg agg;
  for (const auto& ev : events) {
    const double seconds = ev.duration();
    agg.byCat[ev.cat].seconds += seconds;
    if (ev.pid) agg.byProj[*ev.pid].seconds += seconds;
    if (ev.idle) continue;

    auto& app = agg.apps[ev.app];
    app.seconds += seconds;
    app.cats[ev.cat].seconds += seconds;
    if (ev.domain) {
      auto& domain = agg.domains[ev.domain];
      if (!domain.app) domain.app = ev.app;
      domain.seconds += seconds;
      domain.cats[ev.cat].seconds += seconds;
    }
    agg.active += seconds;
  }
  return agg;
}

json::object aggJson(const Agg& agg, const Projects& projects) {
  json::object byCategory;
  for (const auto& cat : agg.byCat.entries()) byCategory[cat.key.view()] = cat.seconds;
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
          {"by_category", std::move(byCategory)},
          {"by_project", projectList(agg.byProj, projects)},
          {"apps", std::move(apps)},
          {"domains", std::move(domains)}};
}

}  // namespace orvanta
