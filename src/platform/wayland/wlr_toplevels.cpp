#include "platform/wayland/wlr_toplevels.h"

#include <wlr-foreign-toplevel-management-unstable-v1.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace orvanta::wayland {

using Handle = zwlr_foreign_toplevel_handle_v1;
using Manager = zwlr_foreign_toplevel_manager_v1;

// A state becomes valid with the event "done" that follows its parts.
struct WlrToplevels::Toplevel {
  WlrToplevels& owner;
  Owned<Handle> handle;
  std::string appId;
  std::string title;
  uint64_t activated = 0;  // when, counted in activations; 0 while another window is active
};

struct WlrToplevels::Events {
  static Toplevel& at(void* data) { return *static_cast<Toplevel*>(data); }

  static void title(void* data, Handle* /*handle*/, const char* title) {
    at(data).title = validUtf8(title);
  }
  static void appId(void* data, Handle* /*handle*/, const char* appId) {
    at(data).appId = validUtf8(appId);
  }
  static void output(void* /*data*/, Handle* /*handle*/, wl_output* /*output*/) {}
  static void parent(void* /*data*/, Handle* /*handle*/, Handle* /*parent*/) {}

  static void state(void* data, Handle* /*handle*/, wl_array* states) {
    auto& toplevel = at(data);
    const auto* first = static_cast<const uint32_t*>(states->data);
    const auto* last = first + states->size / sizeof(uint32_t);
    const bool active =
        std::find(first, last, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != last;
    if (!active) {
      toplevel.activated = 0;
    } else if (toplevel.activated == 0) {
      toplevel.activated = ++toplevel.owner.activations_;
    }
  }

  static void done(void* data, Handle* /*handle*/) { at(data).owner.changed(); }

  static void closed(void* data, Handle* handle) {
    auto& owner = at(data).owner;
    owner.toplevels_.remove_if(
        [handle](const Toplevel& toplevel) { return toplevel.handle.get() == handle; });
    owner.changed();
  }

  static void toplevel(void* data, Manager* /*manager*/, Handle* handle) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener kListener{.title = title,
                                                                        .app_id = appId,
                                                                        .output_enter = output,
                                                                        .output_leave = output,
                                                                        .state = state,
                                                                        .done = done,
                                                                        .closed = closed,
                                                                        .parent = parent};
    auto& owner = *static_cast<WlrToplevels*>(data);
    auto& added = owner.toplevels_.emplace_back(
        Toplevel{owner, {handle, zwlr_foreign_toplevel_handle_v1_destroy}, {}, {}});
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener, &added);
  }

  static void finished(void* data, Manager* /*manager*/) {
    static_cast<WlrToplevels*>(data)->lost();
  }
};

WlrToplevels::WlrToplevels(std::shared_ptr<Connection> connection)
    : membership_(std::move(connection), *this),
      manager_(nullptr, zwlr_foreign_toplevel_manager_v1_destroy) {}

WlrToplevels::~WlrToplevels() = default;

void WlrToplevels::offered(const Global& global) {
  constexpr uint32_t kVersion = 3;
  static constexpr zwlr_foreign_toplevel_manager_v1_listener kListener{
      .toplevel = Events::toplevel, .finished = Events::finished};
  if (manager_ || global.interface != zwlr_foreign_toplevel_manager_v1_interface.name) return;
  manager_.reset(
      static_cast<Manager*>(bind(global, &zwlr_foreign_toplevel_manager_v1_interface, kVersion)));
  managerName_ = global.name;
  zwlr_foreign_toplevel_manager_v1_add_listener(manager_.get(), &kListener, this);
  setReadable(true);
}

void WlrToplevels::withdrawn(uint32_t name) {
  if (manager_ && name == managerName_) lost();
}

void WlrToplevels::lost() {
  toplevels_.clear();
  manager_.reset();
  setReadable(false);
}

// With several seats several windows are active; the one that became so last is where the user is.
void WlrToplevels::changed() {
  const auto front = std::max_element(
      toplevels_.begin(), toplevels_.end(),
      [](const Toplevel& a, const Toplevel& b) { return a.activated < b.activated; });
  if (front == toplevels_.end() || front->activated == 0) return publish({});
  publish(WindowClaims{.names = {front->appId},
                       .fallbackName = front->appId,
                       .title = front->title.empty() ? std::nullopt : std::optional(front->title)});
}

}  // namespace orvanta::wayland
