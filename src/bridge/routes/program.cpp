// The program itself: what it does now, and what it is told to do.
#include <glib.h>

#include "bridge/report_json.h"
#include "bridge/routes/routes.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value currentActivity(const Tracker& tracker) {
  const auto now = tracker.current();
  if (!now) return nullptr;
  const auto& [sample, elapsed] = *now;
  return {{"app", sample.app},
          {"domain", jsonOrNull(sample.domain)},
          {"title", jsonOrNull(sample.title)},
          {"idle", sample.idle},
          {"duration", elapsed}};
}

json::value status(Core& core, const Body& /*body*/) {
  auto& db = core.db;
  const auto& tracker = core.tracker;
  const auto project = tracker.currentProjectId();
  const auto settings = db.settings();
  const auto newer = core.telemetry.updateAvailable();
  json::object answer{
      {"paused", tracker.paused()},
      {"current", currentActivity(tracker)},
      {"now", core.clock()},
      {"accessibility", core.collectors.accessibilityGranted()},
      {"current_project", jsonOrNull(project)},
      {"current_project_name", jsonOrNull(projectName(core, project))},
      {"current_project_since", jsonOrNull(tracker.currentProjectSince())},
      {"db", db.location().file().string()},
      {"onboarded", settings.onboarded || !db.readable()},
      {"telemetry", core.telemetry.enabled()},
      {"install_id", settings.installId},
      {"version", core.telemetry.appVersion()},
      {"update", newer ? json::value({{"version", newer->version}, {"url", newer->url}})
                       : json::value(nullptr)}};
  if (const auto pause = tracker.pause(); pause && pause->until && tracker.paused()) {
    answer["paused_until"] = *pause->until;
  }
  if (const auto check = core.telemetry.updateCheck(); check != UpdateCheck::None) {
    answer["update_check"] = textOf(check);
  }
  if (const auto condition = db.condition()) {
    answer["store"] = {{"state", nameOf(condition->trouble)},
                       {"message", sentenceOf(condition->trouble)},
                       {"since", condition->since}};
  }
  return answer;
}

json::value routesList(Core& /*core*/, const Body& /*body*/) {
  json::array list;
  for (const auto* route : Router::routes()) {
    list.push_back(
        {{"name", route->name}, {"kind", nameOf(route->kind)}, {"arguments", route->arguments}});
  }
  return list;
}

json::value pause(Core& core, const Body& /*body*/) {
  return told(core, core.tracker.setPaused(true));
}

json::value pauseFor(Core& core, const Body& body) {
  const auto until = pauseEnd(body.s("length").value_or(""), core.clock(), core.calendar);
  if (!until) throw AppError(kNoPauseLength);
  return told(core, core.tracker.setPaused(true, until), {{"ok", true}, {"until", *until}});
}

json::value resume(Core& core, const Body& /*body*/) {
  return told(core, core.tracker.setPaused(false));
}

json::value setProject(Core& core, const Body& body) {
  core.tracker.setCurrentProjectId(body.i("project_id"));
  core.shell.refreshMenu();
  return done();
}

json::value setTelemetry(Core& core, const Body& body) {
  const auto written = core.telemetry.setEnabled(body.b("enabled").value_or(false));
  return told(core, written, {{"ok", true}, {"enabled", core.telemetry.enabled()}});
}

json::value checkUpdate(Core& core, const Body& /*body*/) {
  core.telemetry.checkUpdate();
  return done();
}

json::value openUrl(Core& core, const Body& body) {
  const auto url = body.s("url");
  if (url && g_uri_is_valid(url->c_str(), G_URI_FLAGS_NONE, nullptr) != 0) {
    core.shell.openUrl(*url);
  }
  return done();
}

json::value revealData(Core& core, const Body& /*body*/) {
  const auto file = core.db.location().file();
  if (core.shell.reveal(file)) return done();
  return {{"ok", true},
          {"shown", false},
          {"message", "Aucun gestionnaire de fichiers n’est installé. Le dossier est " +
                          file.parent_path().string() + "."}};
}

json::value quit(Core& core, const Body& /*body*/) {
  core.shell.quit();
  return done();
}

constexpr Route kRoutes[]{
    {"status", RouteKind::Read, status},
    {"routes.list", RouteKind::Read, routesList},
    {"tracker.pause", RouteKind::Write, pause},
    {"tracker.pauseFor", RouteKind::Write, pauseFor, "length"},
    {"tracker.resume", RouteKind::Write, resume},
    {"tracker.project", RouteKind::Write, setProject, "project_id"},
    {"telemetry.set", RouteKind::Write, setTelemetry, "enabled"},
    {"update.check", RouteKind::Read, checkUpdate},
    {"openURL", RouteKind::Read, openUrl, "url"},
    {"revealData", RouteKind::Read, revealData},
    {"quit", RouteKind::Read, quit},
};

}  // namespace

RouteTable programRoutes() {
  return kRoutes;
}

}  // namespace orvanta
