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

json::object nameOf(const Browser& browser) {
  return {{"bundle", browser.bundle}, {"name", browser.name}};
}

json::value status(Core& core, const Body& /*body*/) {
  json::array running;
  for (const auto& state : core.browsers.states()) {
    if (state.pid > 0) running.push_back(nameOf(*state.browser));
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

json::value browsers(Core& core, const Body& /*body*/) {
  json::array answer;
  for (const auto& state : core.browsers.states()) {
    json::array steps;
    for (const auto& step : state.steps) {
      steps.push_back({{"text", step.text},
                       {"copy", step.copy},
                       {"button", step.button},
                       {"done", step.done || state.connected}});
    }
    auto told = nameOf(*state.browser);
    told["running"] = state.pid > 0;
    told["connected"] = state.connected;
    told["obstacle"] = state.obstacle;
    told["steps"] = std::move(steps);
    answer.push_back(std::move(told));
  }
  return answer;
}

json::value attempt(const std::string& error) {
  return {{"ok", error.empty()}, {"error", textOrNull(error)}};
}

json::value connectBrowser(Core& core, const Body& body) {
  return attempt(core.browsers.connect(body.s("bundle").value_or("")));
}

json::value openBrowserPage(Core& core, const Body& body) {
  const auto step = body.i("step").value_or(-1);
  return attempt(
      core.browsers.openPage(body.s("bundle").value_or(""), static_cast<std::size_t>(step)));
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
    {"permissions.browsers", RouteKind::Read, browsers},
    {"permissions.connectBrowser", RouteKind::Write, connectBrowser, "bundle"},
    {"permissions.openBrowserPage", RouteKind::Ask, openBrowserPage, "bundle, step"},
    {"permissions.requestAccessibility", RouteKind::Read, requestAccessibility},
    {"permissions.testBrowser", RouteKind::Ask, testBrowser, "bundle"},
    {"permissions.openAutomation", RouteKind::Read, openAutomation},
    {"launchAtLogin", RouteKind::Write, launchAtLogin, "enabled"},
};

}  // namespace

RouteTable permissionRoutes() {
  return kRoutes;
}

}  // namespace orvanta
