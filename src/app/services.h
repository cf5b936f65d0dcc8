// Everything the resident program consists of, put together in one place.
#pragma once

#include <functional>

#include "app/application.h"
#include "base/main_thread.h"
#include "base/serial_queue.h"
#include "bridge/router.h"
#include "capture/collectors.h"
#include "capture/tracker.h"
#include "platform/dbus/logind.h"
#include "platform/dbus/session_client.h"
#include "platform/desktop.h"
#include "reports/analytics.h"
#include "storage/data_lock.h"
#include "storage/database.h"

namespace orvanta {

/// Made on the main thread at start. What stands below uses what stands above, so destruction runs
/// in a safe order.
struct Services {
  /// `sessionEnded` is called when the user's session ends.
  Services(DataLock lock, const std::function<void()>& sessionEnded);

  DataLock lock;
  Database db;
  Glib::RefPtr<Gio::DBus::Connection> systemBus;
  Glib::RefPtr<Gio::DBus::Connection> sessionBus;
  MainThread mainThread;
  Desktop desktop;
  Collectors collectors;
  Tracker tracker;
  Analytics analytics;
  Router router;
  dbus::Logind logind;
  dbus::SessionClient sessionClient;
  SerialQueue bridge;  ///< where requests are answered, off the main thread
};

}  // namespace orvanta
