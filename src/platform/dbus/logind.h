// Lock, unlock, sleep, wake and the end of the session, as systemd-logind tells them.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>

#include <functional>
#include <string>

#include "platform/dbus/service.h"
#include "platform/probes.h"

namespace orvanta::dbus {

/// Tells the listener of the session's LockedHint, of its end and of PrepareForSleep, and holds a
/// delay lock while the machine is awake, so that it waits for us before it sleeps. All on the main
/// loop of the thread that made it; never blocks it. Without logind nothing is ever told.
class Logind {
 public:
  /// `system` may be null.
  Logind(Glib::RefPtr<Gio::DBus::Connection> system, SessionListener listener);
  ~Logind();
  Logind(const Logind&) = delete;
  Logind& operator=(const Logind&) = delete;

  /// Lets the machine sleep now: to be called when what willSleep() asked for is done.
  void readyToSleep();

  /// Whether logind is there. Any thread.
  bool present() const { return service_.present(); }

 private:
  void ask(const std::string& path, const char* interface, const char* method,
           const Reply& arguments, const std::function<void(const Reply&)>& then,
           const std::function<void()>& otherwise);
  void findSession();
  void listSessions();
  void followSession(const std::string& path);
  void lockedHint(bool locked);
  void prepareForSleep(bool aboutToSleep);
  void holdDelayLock();

  Glib::RefPtr<Gio::DBus::Connection> system_;
  Service service_;
  SessionListener listener_;
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  guint sleepSubscription_ = 0;
  guint lockSubscription_ = 0;
  guint endSubscription_ = 0;
  bool locked_ = false;
  int delayLock_ = -1;  // file that logind watches; the lock lasts until it is closed
};

}  // namespace orvanta::dbus
