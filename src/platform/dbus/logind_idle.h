// Idle time where nothing but logind knows it.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "dbus/service.h"
#include "platform/probes.h"

namespace orvanta::dbus {

/// logind's IdleHint, which the desktop sets after its own idle delay, and IdleSinceHint (Unix
/// time, microseconds). Made on the main thread; asked from any.
class LogindIdle : public IdleSource {
 public:
  /// `system` may be null.
  explicit LogindIdle(const Bus& system);

  std::optional<double> idleSeconds() override;
  Source source() const override { return {"logind", "systemd-logind"}; }

 private:
  void read();

  Service logind_;
  std::atomic<bool> known_ = false;
  std::atomic<double> idleSince_ = 0;  // Unix time; 0 while not idle
};

}  // namespace orvanta::dbus
