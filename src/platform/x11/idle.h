// Time since the last input of an X11 session.
#pragma once

#include <optional>
#include <string>

#include "platform/probes.h"
#include "platform/x11/connection.h"

namespace orvanta::x11 {

/// Asks the XScreenSaver extension (MIT-SCREEN-SAVER) over a connection of its own, about 20 us;
/// gives up after 50 ms and reconnects at a later question when the server has gone. Called from
/// one thread.
class Idle : public IdleSource {
 public:
  /// Of the display of that name, "" for `$DISPLAY`.
  explicit Idle(std::string display = {}) : connector_(std::move(display)) {}

  std::optional<double> idleSeconds() override;
  Source source() const override { return {"xscreensaver", "XScreenSaver"}; }

 private:
  std::optional<double> ask();

  Connector connector_;
  Connection connection_;
};

}  // namespace orvanta::x11
