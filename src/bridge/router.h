// Answers requests by name.
#pragma once

#include <array>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <string_view>

#include "base/calendar.h"
#include "base/clock.h"
#include "bridge/body.h"
#include "bridge/platform_actions.h"
#include "capture/tracker.h"
#include "platform/login_item.h"
#include "reports/analytics.h"
#include "storage/database.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// Everything that the dashboard, scripts and status bars can ask or have done. What reads or
/// writes the store never fails: the store tells of its failures itself. One thread at a time calls
/// it.
class Router {
 public:
  /// What the router works on; all but the last two outlive it.
  struct Parts {
    Database& db;
    Tracker& tracker;
    const Analytics& analytics;
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
  static const std::array<Route, 31> kRoutes;

  // Routes that only read.
  Json status(const Body& body);
  Json day(const Body& body);
  Json week(const Body& body);
  Json recap(const Body& body);
  Json suggestions(const Body& body);
  Json projectsList(const Body& body);
  Json rulesList(const Body& body);
  Json settingsGet(const Body& body);
  Json permissionsStatus(const Body& body);

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

  Parts parts_;
  const Clock clock_;
  const Calendar calendar_;
};

/// The answer of what was done.
inline boost::json::object done() {
  return {{"ok", true}};
}

}  // namespace orvanta
