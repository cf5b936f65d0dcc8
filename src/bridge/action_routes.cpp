// The router's routes that act on the program or the desktop.
#include <glib.h>

#include <boost/json/serialize.hpp>
#include <optional>
#include <string>

#include "bridge/app_error.h"
#include "bridge/router.h"
#include "reports/csv_file.h"
#include "storage/json.h"

namespace orvanta {

namespace json = boost::json;

json::value Router::trackerPause(const Body& /*body*/) {
  return told(parts_.tracker.setPaused(true));
}

json::value Router::trackerResume(const Body& /*body*/) {
  return told(parts_.tracker.setPaused(false));
}

json::value Router::trackerProject(const Body& body) {
  parts_.tracker.setCurrentProjectId(body.i("project_id"));
  parts_.platform.refreshMenu();
  return done();
}

json::value Router::requestAccessibility(const Body& /*body*/) {
  parts_.platform.requestAccessibility();
  return done();
}

json::value Router::testBrowser(const Body& body) {
  const auto bundle = body.s("bundle");
  if (!bundle || !parts_.platform.isBrowser(*bundle)) throw AppError("navigateur inconnu");
  const auto test = parts_.platform.testBrowser(*bundle);
  if (!test) throw AppError("test abandonné");
  auto permissions = browserPermissions();
  permissions[*bundle] = test->ok ? "ok" : "denied";
  return told(parts_.db.setSetting("browser_perms", json::serialize(permissions)),
              {{"ok", test->ok},
               {"error", test->error.empty() ? json::value(nullptr) : json::value(test->error)}});
}

json::value Router::openAutomation(const Body& /*body*/) {
  parts_.platform.openAutomation();
  return done();
}

json::value Router::launchAtLogin(const Body& body) {
  const auto error = parts_.loginItem.set(body.b("enabled").value_or(true));
  return {{"ok", !error}, {"error", jsonOrNull(error)}, {"enabled", parts_.loginItem.enabled()}};
}

json::value Router::telemetrySet(const Body& body) {
  const auto written = parts_.telemetry.setEnabled(body.b("enabled").value_or(false));
  return told(written, {{"ok", true}, {"enabled", parts_.telemetry.enabled()}});
}

json::value Router::updateCheck(const Body& /*body*/) {
  parts_.telemetry.checkUpdate();
  return done();
}

json::value Router::exportCsv(const Body& body) {
  const auto from = body.s("from").value_or(calendar_.dateOf(clock_()).iso());
  const auto to = body.s("to").value_or(from);
  const auto file = parts_.platform.saveAs("lumaplan_" + from + "_" + to + ".csv");
  json::object answer{{"ok", file.has_value()}};
  if (!file) return answer;
  if (const auto written = writeCsv(parts_.analytics, from, to, *file); !written) {
    answer["written"] = false;
    answer["message"] = "L'export n'a pas pu être écrit : " + written.problem + ".";
  }
  return answer;
}

json::value Router::openUrl(const Body& body) {
  const auto url = body.s("url");
  if (url && g_uri_is_valid(url->c_str(), G_URI_FLAGS_NONE, nullptr) != 0) {
    parts_.platform.openUrl(*url);
  }
  return done();
}

json::value Router::revealData(const Body& /*body*/) {
  parts_.platform.revealData();
  return done();
}

json::value Router::quit(const Body& /*body*/) {
  parts_.platform.quit();
  return done();
}

}  // namespace orvanta
