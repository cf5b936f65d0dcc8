// The active window of KDE's compositor.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "platform/published.h"
#include "platform/wayland/connection.h"

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace orvanta::wayland {

/// By org_kde_plasma_window_management. KWin shows it only to programs whose desktop file names it
/// in X-KDE-Wayland-Interfaces.
class PlasmaWindows : public PublishedForeground, private Client {
 public:
  explicit PlasmaWindows(std::shared_ptr<Connection> connection);
  ~PlasmaWindows() override;
  PlasmaWindows(const PlasmaWindows&) = delete;
  PlasmaWindows& operator=(const PlasmaWindows&) = delete;

  Source source() override { return {"plasma-window-management", "KDE Plasma"}; }

 private:
  struct Window;
  struct Events;

  void offered(const Global& global) override;
  void withdrawn(uint32_t name) override;
  void lost() override;
  void changed();

  Membership membership_;  // first: the connection outlives the objects
  std::list<Window> windows_;
  Owned<org_kde_plasma_window_management> manager_;
  uint32_t managerName_ = 0;
};

}  // namespace orvanta::wayland
