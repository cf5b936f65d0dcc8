// Time since the last input of a GNOME session.
#pragma once

#include <sigc++/connection.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// By watches of org.gnome.Mutter.IdleMonitor, which fire when the user goes idle and comes back,
/// whatever keeps the display awake. Made on the main thread.
class MutterIdle : public PublishedIdle {
 public:
  /// `session` may be null.
  explicit MutterIdle(const Bus& session);
  ~MutterIdle() override;
  MutterIdle(const MutterIdle&) = delete;
  MutterIdle& operator=(const MutterIdle&) = delete;

  Source source() const override { return {"mutter-idle-monitor", "GNOME"}; }

 private:
  void watchIdle();
  void watchInput();
  void fired(guint32 watch);

  Service mutter_;
  sigc::connection retry_;
  std::optional<guint32> idleWatch_;
  std::optional<guint32> inputWatch_;  // fires once
};

}  // namespace orvanta::dbus
