#include "platform/wayland/plasma_windows.h"

#include <plasma-window-management.h>

#include <utility>

#include "base/text.h"

namespace orvanta::wayland {
namespace {

using Handle = org_kde_plasma_window;
using Manager = org_kde_plasma_window_management;

Toplevels::Window& at(void* data) {
  return *static_cast<Toplevels::Window*>(data);
}

void changedIfActive(const Toplevels::Window& window) {
  if (window.activated != 0) window.list.changed();
}

void title(void* data, Handle* /*handle*/, const char* title) {
  at(data).title = validUtf8(title);
  changedIfActive(at(data));
}
void appId(void* data, Handle* /*handle*/, const char* appId) {
  at(data).appId = validUtf8(appId);
  changedIfActive(at(data));
}
void pid(void* data, Handle* /*handle*/, uint32_t pid) {
  at(data).pid = static_cast<int32_t>(pid);
  changedIfActive(at(data));
}
void state(void* data, Handle* /*handle*/, uint32_t flags) {
  auto& window = at(data);
  const bool active = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
  if (active == (window.activated != 0)) return;
  window.setActive(active);
  window.list.changed();
}
void unmapped(void* data, Handle* /*handle*/) {
  at(data).list.remove(at(data));
}

// Every event has its function: libwayland ends the program where one is missing.
template <class... Arguments>
void ignored(void* /*data*/, Arguments... /*unused*/) {}

void add(void* data, Handle* handle) {
  static constexpr auto kListener = [] {
    org_kde_plasma_window_listener listener{};
    listener.title_changed = title;
    listener.app_id_changed = appId;
    listener.state_changed = state;
    listener.virtual_desktop_changed = ignored;
    listener.themed_icon_name_changed = ignored;
    listener.unmapped = unmapped;
    listener.initial_state = ignored;
    listener.parent_window = ignored;
    listener.geometry = ignored;
    listener.icon_changed = ignored;
    listener.pid_changed = pid;
    listener.virtual_desktop_entered = ignored;
    listener.virtual_desktop_left = ignored;
    listener.application_menu = ignored;
    return listener;
  }();
  org_kde_plasma_window_add_listener(handle, &kListener,
                                     &static_cast<Toplevels*>(data)->add(handle));
}

void window(void* data, Manager* manager, uint32_t number) {
  add(data, org_kde_plasma_window_management_get_window(manager, number));
}
void windowWithUuid(void* data, Manager* manager, uint32_t /*number*/, const char* uuid) {
  add(data, org_kde_plasma_window_management_get_window_by_uuid(manager, uuid));
}

void listen(void* manager, Toplevels* data) {
  static constexpr auto kListener = [] {
    org_kde_plasma_window_management_listener listener{};
    listener.show_desktop_changed = ignored;
    listener.window = window;
    listener.stacking_order_changed = ignored;
    listener.stacking_order_uuid_changed = ignored;
    listener.window_with_uuid = windowWithUuid;
    return listener;
  }();
  org_kde_plasma_window_management_add_listener(static_cast<Manager*>(manager), &kListener, data);
}

}  // namespace

// From 13 on windows are told by UUID. KWin 6 declares one that is asked for by its number closed
// at once.
PlasmaWindows::PlasmaWindows(std::shared_ptr<Connection> connection)
    : Toplevels(
          std::move(connection),
          {.manager = &org_kde_plasma_window_management_interface,
           .version = 13,
           .destroyManager =
               [](void* manager) {
                 org_kde_plasma_window_management_destroy(static_cast<Manager*>(manager));
               },
           .listen = listen,
           .destroyWindow =
               [](void* handle) { org_kde_plasma_window_destroy(static_cast<Handle*>(handle)); }}) {
}

}  // namespace orvanta::wayland
