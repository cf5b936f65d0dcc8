#include "platform/x11/foreground.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace orvanta::x11 {
namespace {

constexpr int kReconnectMilliseconds = 5000;
constexpr int kSettleMilliseconds = 200;
constexpr std::chrono::milliseconds kPatience{500};  // the end of the program waits for it

void selectEvents(xcb_connection_t* connection, xcb_window_t window, uint32_t mask) {
  xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

WindowClaims claimsOf(const WindowFacts& facts) {
  return {.names = {facts.gtkApplicationId, facts.className, facts.instance},
          .fallbackName = facts.className.empty() ? facts.instance : facts.className,
          .title = facts.title,
          .pid = facts.pid};
}

}  // namespace

Foreground::Foreground(std::string display, Log log)
    : connector_(std::move(display)),
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

void Foreground::follow() {
  bool told = false;
  while (!stopping_) {
    if (const auto connection = connector_.connect(kPatience)) {
      told = false;
      followConnection(connection.get());
    } else if (!std::exchange(told, true)) {
      log_("Orvanta: serveur X injoignable, la fenêtre active est inconnue");
    }
    setReadable(false);
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
  setReadable(true);
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
  publish(facts ? std::optional(claimsOf(*facts)) : std::nullopt);
  xcb_flush(connection);
}

}  // namespace orvanta::x11
