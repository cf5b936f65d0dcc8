// Everything the resident program consists of, put together in one place.
#pragma once

#include "app/application.h"
#include "base/serial_queue.h"
#include "bridge/router.h"
#include "capture/browser_connection.h"
#include "capture/collectors.h"
#include "capture/tracker.h"
#include "platform/dbus/logind.h"
#include "platform/desktop.h"
#include "reports/analytics.h"
#include "storage/data_lock.h"
#include "storage/database.h"

namespace orvanta {

/// Made on the main thread at start. What stands below uses what stands above, so destruction runs
/// in a safe order.
struct Services {
  explicit Services(DataLock lock);

  /// Closes the open span; the rest ends with the object.
  void shutdown() { tracker.shutdown(); }

  DataLock lock;
  Database db;
  Glib::RefPtr<Gio::DBus::Connection> systemBus;
  Glib::RefPtr<Gio::DBus::Connection> sessionBus;
  Desktop desktop;
  BrowserTabs browserTabs;
  BrowserConnection browserConnection;
  Collectors collectors;
  Tracker tracker;
  Analytics analytics;
  Router router;
  dbus::Logind logind;
  SerialQueue bridge;  ///< where requests are answered, off the main thread
};

}  // namespace orvanta
