// Everything the resident program consists of, put together in one place.
#pragma once

#include "app/application.h"
#include "base/main_thread.h"
#include "bridge/dashboard_window.h"
#include "bridge/router.h"
#include "capture/collectors.h"
#include "capture/tracker.h"
#include "platform/dbus/logind.h"
#include "platform/desktop.h"
#include "reports/analytics.h"
#include "storage/data_lock.h"
#include "storage/database.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// Made on the main thread at start. What stands below uses what stands above, so destruction runs
/// in a safe order.
struct Services {
  /// `quit` ends the program.
  Services(DataLock lock, std::function<void()> quit);

  ~Services();

  /// Closes the open span; the rest ends with the object.
  void shutdown() { tracker.shutdown(); }

  DataLock lock;
  Database db;
  Glib::RefPtr<Gio::DBus::Connection> systemBus;
  Glib::RefPtr<Gio::DBus::Connection> sessionBus;
  Desktop desktop;
  Collectors collectors;
  Tracker tracker;
  Analytics analytics;
  Telemetry telemetry;
  MainThread mainThread;
  Router router;
  DashboardWindow dashboard;
  dbus::Logind logind;

 private:
  PlatformActions platformActions(std::function<void()> quit);
};

}  // namespace orvanta
