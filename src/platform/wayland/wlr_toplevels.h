// The active window of compositors of the wlroots family.
#pragma once

#include <memory>

#include "platform/wayland/toplevels.h"

namespace orvanta::wayland {

/// By wlr-foreign-toplevel-management-unstable-v1 (sway, Hyprland, niri, labwc, river, COSMIC),
/// which tells application id, title and which window is active, and no process.
class WlrToplevels : public Toplevels {
 public:
  explicit WlrToplevels(std::shared_ptr<Connection> connection);

  Source source() override { return {"wlr-foreign-toplevel", "Wayland (wlroots)"}; }
};

}  // namespace orvanta::wayland
