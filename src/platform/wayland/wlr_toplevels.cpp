#include "platform/wayland/wlr_toplevels.h"

#include <wlr-foreign-toplevel-management-unstable-v1.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace orvanta::wayland {
namespace {

using Handle = zwlr_foreign_toplevel_handle_v1;
using Manager = zwlr_foreign_toplevel_manager_v1;

// A state becomes valid with the event "done" that follows its parts.
Toplevels::Window& at(void* data) {
  return *static_cast<Toplevels::Window*>(data);
}

void title(void* data, Handle* /*handle*/, const char* title) {
  at(data).title = validUtf8(title);
}
void appId(void* data, Handle* /*handle*/, const char* appId) {
  at(data).appId = validUtf8(appId);
}
void output(void* /*data*/, Handle* /*handle*/, wl_output* /*output*/) {}
void parent(void* /*data*/, Handle* /*handle*/, Handle* /*parent*/) {}
void state(void* data, Handle* /*handle*/, wl_array* states) {
  const auto* first = static_cast<const uint32_t*>(states->data);
  const auto* last = first + states->size / sizeof(uint32_t);
  at(data).setActive(std::find(first, last, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) !=
                     last);
}
void done(void* data, Handle* /*handle*/) {
  at(data).list.changed();
}
void closed(void* data, Handle* /*handle*/) {
  at(data).list.remove(at(data));
}

void toplevel(void* data, Manager* /*manager*/, Handle* handle) {
  static constexpr zwlr_foreign_toplevel_handle_v1_listener kListener{.title = title,
                                                                      .app_id = appId,
                                                                      .output_enter = output,
                                                                      .output_leave = output,
                                                                      .state = state,
                                                                      .done = done,
                                                                      .closed = closed,
                                                                      .parent = parent};
  zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener,
                                               &static_cast<Toplevels*>(data)->add(handle));
}

void finished(void* data, Manager* /*manager*/) {
  static_cast<Toplevels*>(data)->lost();
}

void listen(void* manager, Toplevels* data) {
  static constexpr zwlr_foreign_toplevel_manager_v1_listener kListener{.toplevel = toplevel,
                                                                       .finished = finished};
  zwlr_foreign_toplevel_manager_v1_add_listener(static_cast<Manager*>(manager), &kListener, data);
}

}  // namespace

WlrToplevels::WlrToplevels(std::shared_ptr<Connection> connection)
    : Toplevels(std::move(connection),
                {.manager = &zwlr_foreign_toplevel_manager_v1_interface,
                 .version = 3,
                 .destroyManager =
                     [](void* manager) {
                       zwlr_foreign_toplevel_manager_v1_destroy(static_cast<Manager*>(manager));
                     },
                 .listen = listen,
                 .destroyWindow =
                     [](void* handle) {
                       zwlr_foreign_toplevel_handle_v1_destroy(static_cast<Handle*>(handle));
                     }}) {}

}  // namespace orvanta::wayland
