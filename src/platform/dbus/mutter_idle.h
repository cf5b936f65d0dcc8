// Time since the last input of a GNOME session.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/main_thread.h"
#include "dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// By watches of org.gnome.Mutter.IdleMonitor, which fire when the user goes idle and comes back,
/// whatever keeps the display awake. Made on the main thread.
class MutterIdle : public PublishedIdle {
 public:
  /// `session` may be null.
  explicit MutterIdle(const Bus& session);

  Source source() const override { return {"mutter-idle-monitor", "GNOME"}; }

 private:
  void watchIdle();
  void watchInput();
  void fired(guint32 watch);

  Service mutter_;
  std::optional<guint32> idleWatch_;
  std::optional<guint32> inputWatch_;  // fires once
  MainThread mainThread_;
};

}  // namespace orvanta::dbus
