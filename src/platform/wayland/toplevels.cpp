#include "platform/wayland/toplevels.h"

#include <wayland-client-core.h>

#include <algorithm>
#include <utility>

namespace orvanta::wayland {

void Toplevels::Window::setActive(bool active) {
  if (!active) {
    activated = 0;
  } else if (activated == 0) {
    activated = ++list.activations_;
  }
}

Toplevels::Toplevels(std::shared_ptr<Connection> connection, const Protocol& protocol)
    : membership_(std::move(connection), *this),
      protocol_(protocol),
      manager_(nullptr, protocol.destroyManager) {}

Toplevels::Window& Toplevels::add(void* handle) {
  return windows_.emplace_back(Window{*this, {handle, protocol_.destroyWindow}, {}, {}});
}

void Toplevels::remove(const Window& window) {
  windows_.remove_if([&window](const Window& each) { return &each == &window; });
  changed();
}

void Toplevels::offered(const Global& global) {
  if (manager_ || global.interface != protocol_.manager->name) return;
  manager_.reset(bind(global, protocol_.manager, protocol_.version));
  managerName_ = global.name;
  protocol_.listen(manager_.get(), this);
  setReadable(true);
}

void Toplevels::withdrawn(uint32_t name) {
  if (manager_ && name == managerName_) lost();
}

void Toplevels::lost() {
  windows_.clear();
  manager_.reset();
  setReadable(false);
}

// With several seats several windows are active; the one that became so last is where the user is.
void Toplevels::changed() {
  const auto front =
      std::max_element(windows_.begin(), windows_.end(),
                       [](const Window& a, const Window& b) { return a.activated < b.activated; });
  if (front == windows_.end() || front->activated == 0) return publish({});
  publish(WindowClaims{.names = {front->appId},
                       .fallbackName = front->appId,
                       .title = front->title.empty() ? std::nullopt : std::optional(front->title),
                       .pid = front->pid});
}

}  // namespace orvanta::wayland
