// What the desktop and the browsers let the program see.
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "bridge/report_json.h"
#include "bridge/routes/routes.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::object browserPermissions(Core& core) {
  boost::system::error_code broken;
  auto stored = json::parse(core.db.setting("browser_perms"), broken);
  return !broken && stored.is_object() ? std::move(stored.get_object()) : json::object();
}

json::object eachProbe(const Desktop& desktop, std::string Source::* what) {
  const auto sources = desktop.sources();
  return {{"foreground", sources.foreground.*what},
          {"idle", sources.idle.*what},
          {"inhibition", sources.inhibition.*what},
          {"session", sources.session.*what}};
}

json::value status(Core& core, const Body& /*body*/) {
  json::array running;
  for (const auto& [browser, pid] : core.browsers.running()) {
    running.push_back({{"bundle", browser->bundle}, {"name", browser->name}});
  }
  json::object answer{{"accessibility", core.collectors.accessibilityGranted()},
                      {"browsers_running", std::move(running)},
                      {"browsers", browserPermissions(core)},
                      {"launch_at_login", core.loginItem.enabled()},
                      {"probes", eachProbe(core.desktop, &Source::id)},
                      {"advice", core.desktop.whyTitlesAreMissing()}};
  if (const auto films = core.desktop.whyFilmsAreMissed(); !films.empty()) answer["films"] = films;
  return answer;
}

json::value sources(Core& core, const Body& /*body*/) {
  return eachProbe(core.desktop, &Source::name);
}

json::value requestAccessibility(Core& core, const Body& /*body*/) {
  core.shell.post([&core] {
    const auto advice = core.desktop.requestTitles();
    if (!advice.empty()) core.shell.tell(advice);
  });
  return done();
}

json::value testBrowser(Core& core, const Body& body) {
  const auto bundle = body.s("bundle");
  if (!bundle || !BrowserConnection::browserScript(*bundle)) throw AppError("navigateur inconnu");
  core.browsers.resetBrowserCooldowns();
  const auto test = core.browsers.test(*bundle);
  core.browsers.resetBrowserCooldowns();  // the capture is not held back by the test
  if (test.givenUp) throw AppError("test abandonné");
  const bool ok = test.output.has_value();
  auto permissions = browserPermissions(core);
  permissions[*bundle] = ok ? "ok" : "denied";
  return told(core, core.db.setSetting("browser_perms", json::serialize(permissions)),
              {{"ok", ok}, {"error", textOrNull(test.error)}});
}

json::value openAutomation(Core& core, const Body& /*body*/) {
  core.shell.openFile(core.browsers.helpPage());
  return done();
}

json::value launchAtLogin(Core& core, const Body& body) {
  const auto error = core.loginItem.set(body.b("enabled").value_or(true));
  return {{"ok", !error}, {"error", jsonOrNull(error)}, {"enabled", core.loginItem.enabled()}};
}

constexpr Route kRoutes[]{
    {"permissions.status", RouteKind::Read, status},
    {"permissions.sources", RouteKind::Read, sources},
    {"permissions.requestAccessibility", RouteKind::Read, requestAccessibility},
    {"permissions.testBrowser", RouteKind::Ask, testBrowser},
    {"permissions.openAutomation", RouteKind::Read, openAutomation},
    {"launchAtLogin", RouteKind::Write, launchAtLogin},
};

}  // namespace

RouteTable permissionRoutes() {
  return kRoutes;
}

}  // namespace orvanta
