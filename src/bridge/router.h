// Answers requests by name.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "bridge/body.h"
#include "bridge/platform_actions.h"
#include "capture/tracker.h"
#include "platform/login_item.h"
#include "reports/analytics.h"
#include "storage/database.h"
#include "storage/history.h"
#include "storage/rule.h"
#include "storage/store_keeper.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// Everything that the dashboard, scripts and status bars can ask or have done. An answer to what
/// could not be stored has "stored": false and a "message" that says why; a report that is not
/// whole has "incomplete", a sentence. One thread at a time calls it.
class Router {
 public:
  /// What the router works on; all but the last two outlive it.
  struct Parts {
    Database& db;
    Tracker& tracker;
    const Analytics& analytics;
    History& history;
    StoreKeeper& keeper;
    Telemetry& telemetry;
    LoginItem loginItem;
    PlatformActions platform;
  };

  explicit Router(Parts parts, Clock clock = wallClock, Calendar calendar = {});

  /// The answer of the route of this exact name to the arguments in `body`. Throws AppError, also
  /// for a name that no route has.
  boost::json::value handle(std::string_view route, const boost::json::object& body);

 private:
  using Json = boost::json::value;
  struct Route;
  static const std::vector<Route> kRoutes;

  // Routes that only read.
  Json status(const Body& body);
  Json day(const Body& body);
  Json week(const Body& body);
  Json recap(const Body& body);
  Json suggestions(const Body& body);
  Json projectsList(const Body& body);
  Json rulesList(const Body& body);
  Json settingsGet(const Body& body);
  Json settingsDescribe(const Body& body);
  Json permissionsStatus(const Body& body);
  Json rulesPreview(const Body& body);   // in rule_routes.cpp
  Json eventsExplain(const Body& body);  // in rule_routes.cpp

  // Routes that write to the store, in write_routes.cpp.
  Json projectsSave(const Body& body);
  Json projectsDelete(const Body& body);
  Json rulesSave(const Body& body);
  Json rulesDelete(const Body& body);
  Json rulesDefaults(const Body& body);
  Json eventsAssign(const Body& body);
  Json eventsAssignRange(const Body& body);
  Json settingsSet(const Body& body);
  Json onboardingDone(const Body& body);

  // Routes about the store itself, in store_routes.cpp.
  Json storeStatus(const Body& body);
  Json storeBackup(const Body& body);
  Json storeCheck(const Body& body);
  Json storeRestorePreview(const Body& body);
  Json storeRestore(const Body& body);
  Json changesList(const Body& body);
  Json changesUndo(const Body& body);
  Json changesRedo(const Body& body);
  Json eventsDelete(const Body& body);  // in erase_route.cpp

  // Routes that act on the program or the desktop, in action_routes.cpp.
  Json trackerPause(const Body& body);
  Json trackerResume(const Body& body);
  Json trackerProject(const Body& body);
  Json requestAccessibility(const Body& body);
  Json testBrowser(const Body& body);
  Json openAutomation(const Body& body);
  Json launchAtLogin(const Body& body);
  Json telemetrySet(const Body& body);
  Json updateCheck(const Body& body);
  Json exportCsv(const Body& body);
  Json openUrl(const Body& body);
  Json revealData(const Body& body);
  Json quit(const Body& body);

  boost::json::object browserPermissions() const;
  boost::json::array rows(std::string_view sql);
  Json turned(History::Outcome outcome, std::string_view done);
  Backup knownBackup(const Body& body);
  /// The answer, which says so when nothing was stored.
  boost::json::object told(const Written& written, boost::json::object answer = {{"ok", true}});
  TimeRange reachOf(const std::vector<int64_t>& ids);
  std::optional<std::string> projectName(const std::optional<int64_t>& id);
  static TimeRange rangeOf(const Body& body);
  static Rule ruleOf(const Body& body);

  Parts parts_;
  const Clock clock_;
  const Calendar calendar_;
  int64_t lastProject_ = 0;  // the highest id that a project had
};

/// The answer of what was done.
inline boost::json::object done() {
  return {{"ok", true}};
}

}  // namespace orvanta
