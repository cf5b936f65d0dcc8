// Locked, unlocked, asleep, awake: what any service of the session says.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/dbus/lock_screens.h"
#include "platform/dbus/logind.h"
#include "platform/probes.h"

namespace orvanta {

/// The session counts as locked while logind or a screen locker says so. Sleep and wake are
/// logind's. On the main thread; never blocks it.
class SessionEvents {
 public:
  /// Either bus may be null.
  SessionEvents(dbus::Bus system, dbus::Bus session);

  /// Begins to tell `listener`.
  void listen(SessionListener listener);

  /// Whether the screen is locked, as far as is known.
  bool locked() const { return locked_; }

  /// Lets the machine sleep now: to be called when what willSleep() asked for is done.
  void readyToSleep();

  /// The services that are there. Any thread, after listen().
  Source source() const;

 private:
  void changed();

  const dbus::Bus system_;
  const dbus::Bus session_;
  SessionListener listener_;
  bool hinted_ = false;   // by logind
  bool covered_ = false;  // by a screen locker
  bool locked_ = false;
  std::unique_ptr<dbus::Logind> logind_;
  std::unique_ptr<dbus::LockScreens> lockScreens_;
};

}  // namespace orvanta
