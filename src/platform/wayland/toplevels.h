// What the compositors' lists of windows have in common.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "platform/published.h"
#include "platform/wayland/connection.h"

namespace orvanta::wayland {

/// The windows that a manager, a global object of the compositor, tells of. Each protocol brings
/// what Protocol names, and functions for its events, which call the public part. Main thread, but
/// for the probe's own operations.
class Toplevels : public PublishedForeground, private Client {
 public:
  struct Protocol {
    const wl_interface* manager;
    uint32_t version;  ///< the highest that is understood
    void (*destroyManager)(void* manager);
    void (*listen)(void* manager, Toplevels* data);
    void (*destroyWindow)(void* window);
  };
  struct Window {
    Toplevels& list;
    Owned<void> handle;
    std::string appId;
    std::string title;
    int32_t pid = 0;
    uint64_t activated = 0;  ///< when, counted in activations; 0 while another window is active

    void setActive(bool active);
  };

  Toplevels(std::shared_ptr<Connection> connection, const Protocol& protocol);

  Window& add(void* handle);
  void remove(const Window& window);
  /// Publishes the active window.
  void changed();
  void lost() override;

 private:
  void offered(const Global& global) override;
  void withdrawn(uint32_t name) override;

  Membership membership_;  // first: the connection outlives the objects
  const Protocol protocol_;
  std::list<Window> windows_;
  Owned<void> manager_;
  uint32_t managerName_ = 0;
  uint64_t activations_ = 0;
};

}  // namespace orvanta::wayland
