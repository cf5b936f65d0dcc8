// The active window of compositors of the wlroots family.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "platform/published.h"
#include "platform/wayland/connection.h"

struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace orvanta::wayland {

/// By wlr-foreign-toplevel-management-unstable-v1 (sway, Hyprland, niri, labwc, river, COSMIC),
/// which tells application id, title and which window is active, and no process.
class WlrToplevels : public PublishedForeground, private Client {
 public:
  explicit WlrToplevels(std::shared_ptr<Connection> connection);
  ~WlrToplevels() override;
  WlrToplevels(const WlrToplevels&) = delete;
  WlrToplevels& operator=(const WlrToplevels&) = delete;

  Source source() override { return {"wlr-foreign-toplevel", "Wayland (wlroots)"}; }

 private:
  struct Toplevel;
  struct Events;

  void offered(const Global& global) override;
  void withdrawn(uint32_t name) override;
  void lost() override;
  void changed();

  Membership membership_;  // first: the connection outlives the objects
  std::list<Toplevel> toplevels_;
  Owned<zwlr_foreign_toplevel_manager_v1> manager_;
  uint32_t managerName_ = 0;
  uint64_t activations_ = 0;
};

}  // namespace orvanta::wayland
