// Lock, unlock, sleep, wake and the end of the session, as systemd-logind tells them.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>

#include <functional>
#include <string>
#include <vector>

#include "base/main_thread.h"
#include "platform/dbus/service.h"
#include "platform/probes.h"

namespace orvanta::dbus {

/// Tells the listener of the session's LockedHint, of its end and of PrepareForSleep, and holds a
/// delay lock while the machine is awake, so that it waits for us before it sleeps. A logind that
/// comes again is asked for all of that afresh; sleep ends with the logind that announced it, and
/// when it says that it prepares for none, whether a signal told so or not. All on the main loop of
/// the thread that made it; never blocks it. Without logind nothing is ever told.
class Logind {
 public:
  /// `system` may be null.
  Logind(Glib::RefPtr<Gio::DBus::Connection> system, SessionListener listener);
  ~Logind();
  Logind(const Logind&) = delete;
  Logind& operator=(const Logind&) = delete;

  /// Lets the machine sleep now: to be called when what willSleep() asked for is done.
  void readyToSleep();

  static Source source() { return {"logind", "systemd-logind"}; }
  /// Whether logind is there. Any thread.
  bool present() const { return service_.present(); }

 private:
  void follow(const char* interface, const char* signal, const char* path,
              std::function<void(const std::string& path, const Reply& arguments)> then,
              const char* about = "");
  void ask(const std::string& path, const char* interface, const char* method,
           const Reply& arguments, const std::function<void(const Reply&)>& then,
           const std::function<void()>& otherwise);
  void appeared();
  void vanished();
  void findSession();
  void listSessions();
  void followSession(const std::string& path);
  void lockedHint(bool locked);
  void prepareForSleep(bool aboutToSleep);
  void askForSleep();
  void askForSleepAgain();
  void wake();
  void holdDelayLock();

  Glib::RefPtr<Gio::DBus::Connection> system_;
  Service service_;
  SessionListener listener_;
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  std::vector<guint> subscriptions_;
  std::string session_;  // its object; empty until it is known
  bool locked_ = false;
  bool asleep_ = false;  // or about to be
  int sleeps_ = 0;       // counts them
  int silences_ = 0;     // questions of this sleep that were not answered
  int delayLock_ = -1;   // file that logind watches; the lock lasts until it is closed
  MainThread mainThread_;
};

}  // namespace orvanta::dbus
