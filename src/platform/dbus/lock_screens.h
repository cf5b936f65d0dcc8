// The screen lockers of desktops that do not tell logind.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dbus/service.h"
#include "platform/probes.h"

namespace orvanta::dbus {

/// Follows every screen locker of the session bus that has the interface of
/// org.freedesktop.ScreenSaver or one of its descendants: GetActive and ActiveChanged. A locker
/// that goes away does not cover the screen any more. Made on the main thread; never blocks it.
class LockScreens {
 public:
  /// `session` may be null. `changed` is told whether any covers the screen, when that changes.
  LockScreens(const Bus& session, std::function<void(bool)> changed);
  LockScreens(const LockScreens&) = delete;
  LockScreens& operator=(const LockScreens&) = delete;

  /// The lockers that are there. Any thread.
  std::vector<Source> present() const;

 private:
  struct Locker {
    Source source;
    Service service;
    bool active = false;
    Locker(Source known, const Bus& bus, const std::string& name)
        : source(std::move(known)), service(bus, name) {}
  };

  void setActive(Locker& locker, bool active);

  std::function<void(bool)> changed_;
  std::vector<std::unique_ptr<Locker>> lockers_;
  bool covered_ = false;
};

}  // namespace orvanta::dbus
