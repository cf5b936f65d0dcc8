#include "platform/wayland/plasma_windows.h"

#include <plasma-window-management.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace orvanta::wayland {

using Handle = org_kde_plasma_window;
using Manager = org_kde_plasma_window_management;

struct PlasmaWindows::Window {
  PlasmaWindows& owner;
  Owned<Handle> handle;
  std::string appId;
  std::string title;
  int32_t pid = 0;
  bool active = false;
};

// Every event has its function: libwayland ends the program where one is missing.
struct PlasmaWindows::Events {
  static Window& at(void* data) { return *static_cast<Window*>(data); }

  static void title(void* data, Handle* /*handle*/, const char* title) {
    at(data).title = validUtf8(title);
    changedIfActive(at(data));
  }
  static void appId(void* data, Handle* /*handle*/, const char* appId) {
    at(data).appId = validUtf8(appId);
    changedIfActive(at(data));
  }
  static void pid(void* data, Handle* /*handle*/, uint32_t pid) {
    at(data).pid = static_cast<int32_t>(pid);
    changedIfActive(at(data));
  }
  static void changedIfActive(const Window& window) {
    if (window.active) window.owner.changed();
  }

  static void state(void* data, Handle* /*handle*/, uint32_t flags) {
    auto& window = at(data);
    const bool active = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
    if (std::exchange(window.active, active) != active) window.owner.changed();
  }

  static void unmapped(void* data, Handle* handle) {
    auto& owner = at(data).owner;
    owner.windows_.remove_if(
        [handle](const Window& window) { return window.handle.get() == handle; });
    owner.changed();
  }

  static void number(void* /*data*/, Handle* /*handle*/, int32_t /*value*/) {}
  static void text(void* /*data*/, Handle* /*handle*/, const char* /*value*/) {}
  static void twoTexts(void* /*data*/, Handle* /*handle*/, const char* /*a*/, const char* /*b*/) {}
  static void nothing(void* /*data*/, Handle* /*handle*/) {}
  static void parent(void* /*data*/, Handle* /*handle*/, Handle* /*parent*/) {}
  static void geometry(void* /*data*/, Handle* /*handle*/, int32_t /*x*/, int32_t /*y*/,
                       uint32_t /*width*/, uint32_t /*height*/) {}

  static void window(void* data, Manager* manager, uint32_t number) {
    static constexpr auto kListener = [] {
      org_kde_plasma_window_listener listener{};
      listener.title_changed = title;
      listener.app_id_changed = appId;
      listener.state_changed = state;
      listener.virtual_desktop_changed = Events::number;
      listener.themed_icon_name_changed = text;
      listener.unmapped = unmapped;
      listener.initial_state = nothing;
      listener.parent_window = parent;
      listener.geometry = geometry;
      listener.icon_changed = nothing;
      listener.pid_changed = pid;
      listener.virtual_desktop_entered = text;
      listener.virtual_desktop_left = text;
      listener.application_menu = twoTexts;
      return listener;
    }();
    auto& owner = *static_cast<PlasmaWindows*>(data);
    auto* handle = org_kde_plasma_window_management_get_window(manager, number);
    auto& added =
        owner.windows_.emplace_back(Window{owner, {handle, org_kde_plasma_window_destroy}, {}, {}});
    org_kde_plasma_window_add_listener(handle, &kListener, &added);
  }

  static void showingDesktop(void* /*data*/, Manager* /*manager*/, uint32_t /*state*/) {}
  static void order(void* /*data*/, Manager* /*manager*/, wl_array* /*numbers*/) {}
};

PlasmaWindows::PlasmaWindows(std::shared_ptr<Connection> connection)
    : membership_(std::move(connection), *this),
      manager_(nullptr, org_kde_plasma_window_management_destroy) {}

PlasmaWindows::~PlasmaWindows() = default;

void PlasmaWindows::offered(const Global& global) {
  // From 12 on windows are told by UUID as well, which costs a request more and tells no more.
  constexpr uint32_t kVersion = 11;
  static constexpr auto kListener = [] {
    org_kde_plasma_window_management_listener listener{};
    listener.show_desktop_changed = Events::showingDesktop;
    listener.window = Events::window;
    listener.stacking_order_changed = Events::order;
    return listener;
  }();
  if (manager_ || global.interface != org_kde_plasma_window_management_interface.name) return;
  manager_.reset(
      static_cast<Manager*>(bind(global, &org_kde_plasma_window_management_interface, kVersion)));
  managerName_ = global.name;
  org_kde_plasma_window_management_add_listener(manager_.get(), &kListener, this);
  setReadable(true);
}

void PlasmaWindows::withdrawn(uint32_t name) {
  if (manager_ && name == managerName_) lost();
}

void PlasmaWindows::lost() {
  windows_.clear();
  manager_.reset();
  setReadable(false);
}

void PlasmaWindows::changed() {
  const auto front = std::find_if(windows_.begin(), windows_.end(),
                                  [](const Window& window) { return window.active; });
  if (front == windows_.end()) return publish({});
  publish(WindowClaims{.names = {front->appId},
                       .fallbackName = front->appId,
                       .title = front->title.empty() ? std::nullopt : std::optional(front->title),
                       .pid = front->pid});
}

}  // namespace orvanta::wayland
