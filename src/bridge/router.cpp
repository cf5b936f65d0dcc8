#include "bridge/router.h"

#include <algorithm>
#include <string>
#include <vector>

#include "bridge/app_error.h"
#include "bridge/body.h"
#include "bridge/routes/routes.h"

namespace orvanta {

std::string_view nameOf(RouteKind kind) {
  switch (kind) {
    case RouteKind::Read:
      return "read";
    case RouteKind::Write:
      return "write";
    case RouteKind::Ask:
      break;
  }
  return "ask";
}

std::span<const Route* const> Router::routes() {
  static const auto kAll = [] {
    std::vector<const Route*> all;
    for (const auto table : {programRoutes(), reportRoutes(), searchRoutes(), sheetRoutes(),
                             projectRoutes(), goalRoutes(), importRoutes(), ruleRoutes(),
                             eventRoutes(), momentRoutes(), exclusionRoutes(), changeRoutes(),
                             settingsRoutes(), permissionRoutes(), storeRoutes(), pageRoutes()}) {
      for (const auto& route : table) all.push_back(&route);
    }
    return all;
  }();
  return kAll;
}

const Route* Router::find(std::string_view name) {
  const auto all = routes();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Route* route) { return route->name == name; });
  return found != all.end() ? *found : nullptr;
}

boost::json::value Router::handle(std::string_view name, const boost::json::object& body) {
  const auto* route = find(name);
  if (!route) throw AppError("route inconnue : " + std::string(name));
  return route->answer(core_, Body(body));
}

}  // namespace orvanta
