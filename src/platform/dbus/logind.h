// Lock, unlock, sleep, wake and the end of the session, as systemd-logind tells them.
#pragma once

#include <string>
#include <vector>

#include "base/main_thread.h"
#include "dbus/service.h"
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
  Logind(const Bus& system, SessionListener listener);

  /// Lets the machine sleep now: to be called when what willSleep() asked for is done.
  void readyToSleep() { delayLock_.reset(); }

  static Source source() { return {"logind", "systemd-logind"}; }
  /// Whether logind is there. Any thread.
  bool present() const { return service_.present(); }

 private:
  void appeared();
  void vanished();
  void findSession();
  void listSessions(const std::string& display);
  void chooseSession(std::vector<std::string> candidates, const std::string& textLogin);
  void followSession(const std::string& path);
  void lockedHint(bool locked);
  void prepareForSleep(bool aboutToSleep);
  void askForSleep();
  void askForSleepAgain();
  void wake();
  void holdDelayLock();

  Service service_;
  Conversation logind_;
  SessionListener listener_;
  std::string session_;  // its object; empty until it is known
  bool locked_ = false;
  bool asleep_ = false;  // or about to be
  int sleeps_ = 0;       // counts them
  int silences_ = 0;     // questions of this sleep that were not answered
  OwnedFd delayLock_;    // file that logind watches; the lock lasts until it is closed
  MainThread mainThread_;
};

}  // namespace orvanta::dbus
