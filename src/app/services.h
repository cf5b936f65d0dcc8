// Everything the resident program consists of, put together in one place.
#pragma once

#include <giomm/dbusconnection.h>

#include "bridge/core.h"
#include "bridge/dashboard_window.h"
#include "platform/dbus/session_client.h"
#include "platform/desktop.h"
#include "storage/data_lock.h"
#include "storage/database.h"

namespace orvanta {

/// Made on the main thread at start. What stands below uses what stands above, so destruction runs
/// in a safe order.
struct Services {
  /// `endSession` ends the program when its session does, on the main thread.
  Services(DataLock lock, Shell& shell, const std::function<void()>& endSession);
  ~Services();

  DataLock lock;
  Database db;
  Glib::RefPtr<Gio::DBus::Connection> systemBus;
  Glib::RefPtr<Gio::DBus::Connection> sessionBus;
  Desktop desktop;
  Core core;
  DashboardWindow dashboard;
  dbus::SessionClient sessionClient;

 private:
  void keepStore();
};

}  // namespace orvanta
