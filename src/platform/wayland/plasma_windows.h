// The active window of KDE's compositor.
#pragma once

#include <memory>

#include "platform/wayland/toplevels.h"

namespace orvanta::wayland {

/// By org_kde_plasma_window_management. KWin shows it only to programs whose desktop file names it
/// in X-KDE-Wayland-Interfaces.
class PlasmaWindows : public Toplevels {
 public:
  explicit PlasmaWindows(std::shared_ptr<Connection> connection);

  Source source() override { return {"plasma-window-management", "KDE Plasma"}; }
};

}  // namespace orvanta::wayland
