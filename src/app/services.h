// Everything the resident program consists of, put together in one place.
#pragma once

#include <functional>

#include "app/application.h"
#include "base/main_thread.h"
#include "bridge/dashboard_window.h"
#include "bridge/router.h"
#include "capture/browser_connection.h"
#include "capture/collectors.h"
#include "capture/tracker.h"
#include "platform/dbus/session_client.h"
#include "platform/desktop.h"
#include "reports/analytics.h"
#include "storage/backups.h"
#include "storage/data_lock.h"
#include "storage/database.h"
#include "storage/history.h"
#include "storage/store_keeper.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// Made on the main thread at start. What stands below uses what stands above, so destruction runs
/// in a safe order.
struct Services {
  /// What the services ask of the program. Called on the main thread.
  struct Hooks {
    std::function<void()> quit;
    std::function<void()> refreshMenu;                  ///< what the menu shows may have changed
    std::function<void(const std::string& text)> tell;  ///< the user, by a notification
  };

  Services(DataLock lock, const Hooks& hooks);
  ~Services();

  DataLock lock;
  Backups backups;
  Database db;
  Glib::RefPtr<Gio::DBus::Connection> systemBus;
  Glib::RefPtr<Gio::DBus::Connection> sessionBus;
  MainThread mainThread;
  Desktop desktop;
  BrowserTabs browserTabs;
  BrowserConnection browserConnection;
  Collectors collectors;
  Tracker tracker;
  Analytics analytics;
  History history;
  StoreKeeper keeper;
  Telemetry telemetry;
  Router router;
  DashboardWindow dashboard;
  dbus::SessionClient sessionClient;

 private:
  void keepStore(const Hooks& hooks);
  PlatformActions platformActions(const Hooks& hooks);
};

}  // namespace orvanta
