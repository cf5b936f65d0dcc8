#include "bridge/router.h"

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value_from.hpp>
#include <string>
#include <utility>

#include "bridge/app_error.h"
#include "storage/json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value toJson(const Value& value) {
  if (const auto* number = value.integer()) return *number;
  if (const auto* number = value.real()) return *number;
  if (const auto* text = value.text()) return json::string(*text);
  return nullptr;
}

}  // namespace

struct Router::Route {
  std::string_view name;
  Json (Router::*answer)(const Body&);
};

const std::vector<Router::Route> Router::kRoutes{
    {"status", &Router::status},
    {"day", &Router::day},
    {"week", &Router::week},
    {"recap", &Router::recap},
    {"suggestions", &Router::suggestions},
    {"projects.list", &Router::projectsList},
    {"projects.save", &Router::projectsSave},
    {"projects.delete", &Router::projectsDelete},
    {"rules.list", &Router::rulesList},
    {"rules.preview", &Router::rulesPreview},
    {"rules.save", &Router::rulesSave},
    {"rules.delete", &Router::rulesDelete},
    {"rules.defaults", &Router::rulesDefaults},
    {"events.explain", &Router::eventsExplain},
    {"events.assign", &Router::eventsAssign},
    {"events.assignRange", &Router::eventsAssignRange},
    {"settings.get", &Router::settingsGet},
    {"settings.describe", &Router::settingsDescribe},
    {"settings.set", &Router::settingsSet},
    {"tracker.pause", &Router::trackerPause},
    {"tracker.resume", &Router::trackerResume},
    {"tracker.project", &Router::trackerProject},
    {"permissions.status", &Router::permissionsStatus},
    {"permissions.requestAccessibility", &Router::requestAccessibility},
    {"permissions.testBrowser", &Router::testBrowser},
    {"permissions.openAutomation", &Router::openAutomation},
    {"launchAtLogin", &Router::launchAtLogin},
    {"telemetry.set", &Router::telemetrySet},
    {"update.check", &Router::updateCheck},
    {"onboarding.done", &Router::onboardingDone},
    {"export", &Router::exportCsv},
    {"openURL", &Router::openUrl},
    {"revealData", &Router::revealData},
    {"quit", &Router::quit},
    {"events.delete", &Router::eventsDelete},
    {"store.status", &Router::storeStatus},
    {"store.backup", &Router::storeBackup},
    {"store.check", &Router::storeCheck},
    {"store.restorePreview", &Router::storeRestorePreview},
    {"store.restore", &Router::storeRestore},
    {"changes.list", &Router::changesList},
    {"changes.undo", &Router::changesUndo},
    {"changes.redo", &Router::changesRedo},
};

Router::Router(Parts parts, Clock clock, Calendar calendar)
    : parts_(std::move(parts)), clock_(std::move(clock)), calendar_(std::move(calendar)) {}

json::value Router::handle(std::string_view name, const json::object& body) {
  for (const auto& route : kRoutes) {
    if (route.name == name) return (this->*route.answer)(Body(body));
  }
  throw AppError("route inconnue : " + std::string(name));
}

json::object Router::told(const Written& written, json::object answer) {
  if (written) return answer;
  answer["stored"] = false;
  answer["message"] = parts_.db.whyNot(written);
  return answer;
}

// Rows as the store has them, column by column. An empty list would say that there are none.
json::array Router::rows(std::string_view sql) {
  auto& db = parts_.db;
  json::array list;
  const bool all = db.each(sql, {}, [&](const Cursor& row) {
    json::object object;
    for (int i = 0; i < row.columns(); ++i) object[row.name(i)] = toJson(row.value(i));
    list.push_back(std::move(object));
  });
  if (all) return list;
  const auto condition = db.condition();
  throw AppError(condition ? std::string(sentenceOf(condition->trouble))
                           : "le fichier des données ne peut pas être lu");
}

json::value Router::status(const Body& /*body*/) {
  auto& [db, tracker, analytics, history, keeper, telemetry, loginItem, platform] = parts_;
  json::value current(nullptr);
  if (const auto now = tracker.current()) {
    current = {{"app", now->sample.app},
               {"domain", jsonOrNull(now->sample.domain)},
               {"title", jsonOrNull(now->sample.title)},
               {"idle", now->sample.idle},
               {"duration", now->elapsed}};
  }
  const auto project = tracker.currentProjectId();
  json::value projectName(nullptr);
  if (project) {
    db.each("SELECT name FROM projects WHERE id=?", {*project}, [&](const Cursor& row) {
      if (const auto name = row.str(0)) projectName = json::value(*name);
    });
  }
  json::value update(nullptr);
  if (const auto newer = telemetry.updateAvailable()) {
    update = {{"version", newer->version}, {"url", newer->url}};
  }
  const auto settings = db.settings();
  json::object answer{{"paused", tracker.paused()},
                      {"current", std::move(current)},
                      {"now", clock_()},
                      {"accessibility", platform.accessibilityGranted()},
                      {"current_project", jsonOrNull(project)},
                      {"current_project_name", std::move(projectName)},
                      {"current_project_since", jsonOrNull(tracker.currentProjectSince())},
                      {"db", db.location().file().string()},
                      {"onboarded", settings.onboarded || !db.readable()},
                      {"telemetry", telemetry.enabled()},
                      {"install_id", settings.installId},
                      {"version", telemetry.appVersion()},
                      {"update", std::move(update)}};
  if (const auto condition = db.condition()) {
    answer["store"] = {{"state", nameOf(condition->trouble)},
                       {"message", sentenceOf(condition->trouble)},
                       {"since", condition->since}};
  }
  return answer;
}

json::value Router::day(const Body& body) {
  return parts_.analytics.day(body.s("date"));
}

json::value Router::week(const Body& body) {
  return parts_.analytics.week(body.s("date"));
}

json::value Router::recap(const Body& body) {
  return parts_.analytics.recap(body.s("date"));
}

json::value Router::suggestions(const Body& /*body*/) {
  return parts_.analytics.suggestions();
}

json::value Router::projectsList(const Body& /*body*/) {
  return rows("SELECT * FROM projects ORDER BY archived, name");
}

json::value Router::rulesList(const Body& /*body*/) {
  return rows("SELECT * FROM rules ORDER BY priority DESC, length(pattern) DESC, id");
}

json::value Router::settingsGet(const Body& /*body*/) {
  return json::value_from(parts_.db.allSettings());
}

json::value Router::settingsDescribe(const Body& /*body*/) {
  return describeSettings();
}

json::value Router::permissionsStatus(const Body& /*body*/) {
  json::array running;
  for (const auto& browser : parts_.platform.runningBrowsers()) {
    running.push_back({{"bundle", browser.bundle}, {"name", browser.name}});
  }
  return {{"accessibility", parts_.platform.accessibilityGranted()},
          {"browsers_running", std::move(running)},
          {"browsers", browserPermissions()},
          {"launch_at_login", parts_.loginItem.enabled()},
          {"probes", parts_.platform.probes()},
          {"probe_names", parts_.platform.probeNames()},
          {"advice", parts_.platform.whyTitlesAreMissing()}};
}

json::object Router::browserPermissions() const {
  boost::system::error_code broken;
  auto stored = json::parse(parts_.db.setting("browser_perms"), broken);
  return !broken && stored.is_object() ? std::move(stored.get_object()) : json::object();
}

}  // namespace orvanta
