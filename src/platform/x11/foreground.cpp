#include "platform/x11/foreground.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "platform/x11/connection.h"

namespace orvanta::x11 {
namespace {

constexpr int kReconnectMilliseconds = 5000;
constexpr int kSettleMilliseconds = 200;

void selectEvents(xcb_connection_t* connection, xcb_window_t window, uint32_t mask) {
  xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

}  // namespace

Foreground::Foreground(std::string display, Log log)
    : display_(std::move(display)),
      log_(std::move(log)),
      wake_(eventfd(0, EFD_CLOEXEC)),
      thread_([this] { follow(); }) {
  pthread_setname_np(thread_.native_handle(), "orvanta.x11");
}

Foreground::~Foreground() {
  stopping_ = true;
  eventfd_write(wake_, 1);
  thread_.join();
  close(wake_);
}

std::optional<FrontmostApp> Foreground::frontmostApp() {
  const std::lock_guard lock(mutex_);
  return front_ ? std::optional(front_->app) : std::nullopt;
}

std::optional<std::string> Foreground::windowTitle(int32_t pid) {
  const std::lock_guard lock(mutex_);
  return front_ && front_->app.pid == pid ? front_->title : std::nullopt;
}

bool Foreground::titlesReadable() {
  const std::lock_guard lock(mutex_);
  return connected_;
}

void Foreground::follow() {
  bool told = false;
  while (!stopping_) {
    if (const auto connection = connect(display_)) {
      told = false;
      followConnection(connection.get());
    } else if (!std::exchange(told, true)) {
      log_("Orvanta: serveur X injoignable, la fenêtre active est inconnue");
    }
    publish({});
    waitForServer(-1, kReconnectMilliseconds);
  }
}

// False when the wait ended because the thread must end.
bool Foreground::waitForServer(int file, int milliseconds) const {
  std::array<pollfd, 2> files{{{wake_, POLLIN, 0}, {file, POLLIN, 0}}};
  poll(files.data(), files.size(), milliseconds);
  return !stopping_;
}

void Foreground::followConnection(xcb_connection_t* connection) {
  const WindowReader reader(connection);
  {
    const std::lock_guard lock(mutex_);
    connected_ = true;
  }
  selectEvents(connection, rootOf(connection), XCB_EVENT_MASK_PROPERTY_CHANGE);
  xcb_window_t watched = XCB_WINDOW_NONE;
  look(reader, connection, watched);
  while (xcb_connection_has_error(connection) == 0) {
    bool changed = false;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
      const auto type = event->response_type & 0x7f;
      changed = changed || type == XCB_DESTROY_NOTIFY || type == XCB_UNMAP_NOTIFY ||
                (type == XCB_PROPERTY_NOTIFY &&
                 reader.matters(reinterpret_cast<xcb_property_notify_event_t*>(event.get())->atom));
    }
    if (changed) {
      look(reader, connection, watched);
      // A terminal may change its title at every line; five looks a second are plenty.
      if (!waitForServer(-1, kSettleMilliseconds)) break;
    } else if (!waitForServer(xcb_get_file_descriptor(connection), -1)) {
      break;
    }
  }
  const std::lock_guard lock(mutex_);
  connected_ = false;
}

void Foreground::look(const WindowReader& reader, xcb_connection_t* connection,
                      xcb_window_t& watched) {
  const auto window = reader.active().value_or(XCB_WINDOW_NONE);
  if (window != watched) {
    if (watched != XCB_WINDOW_NONE) selectEvents(connection, watched, XCB_EVENT_MASK_NO_EVENT);
    if (window != XCB_WINDOW_NONE) {
      selectEvents(connection, window,
                   XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
    watched = window;
  }
  // After selecting events: a change from here on is told.
  const auto facts = window != XCB_WINDOW_NONE ? reader.read(window) : std::nullopt;
  publish(facts ? std::optional(describe(*facts)) : std::nullopt);
  xcb_flush(connection);
}

Foreground::Window Foreground::describe(const WindowFacts& facts) {
  std::optional<DesktopEntry> entry;
  for (const auto* name : {&facts.gtkApplicationId, &facts.className, &facts.instance}) {
    if (!entry) entry = entries_.find(*name);
  }
  Window window{.app = {.name = {}, .bundle = {}, .pid = facts.pid}, .title = facts.title};
  if (entry) {
    window.app.name = entry->name;
    window.app.bundle = entry->id;
  } else {
    window.app.name = facts.className.empty() ? facts.instance : facts.className;
  }
  if (window.app.name.empty()) window.app.name = "Inconnu";
  return window;
}

void Foreground::publish(std::optional<Window> window) {
  const std::lock_guard lock(mutex_);
  front_ = std::move(window);
}

}  // namespace orvanta::x11
