#include "platform/x11/idle.h"

#include <poll.h>
#include <xcb/screensaver.h>
#include <xcb/xcbext.h>

#include <chrono>

namespace orvanta::x11 {
namespace {

constexpr std::chrono::milliseconds kPatience{50};

using Info = xcb_screensaver_query_info_reply_t;

// The reply, or null when it did not come in time or is an error.
Owned<Info> waitForReply(xcb_connection_t* connection, xcb_screensaver_query_info_cookie_t cookie) {
  using std::chrono::steady_clock;
  xcb_flush(connection);
  const auto deadline = steady_clock::now() + kPatience;
  for (;;) {
    void* reply = nullptr;
    xcb_generic_error_t* raw = nullptr;
    if (xcb_poll_for_reply(connection, cookie.sequence, &reply, &raw) != 0) {
      const Owned<xcb_generic_error_t> error(raw);
      return Owned<Info>(static_cast<Info*>(reply));
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steady_clock::now());
    if (left.count() <= 0) {
      xcb_discard_reply(connection, cookie.sequence);
      return {};
    }
    pollfd file{xcb_get_file_descriptor(connection), POLLIN, 0};
    poll(&file, 1, static_cast<int>(left.count()));
  }
}

}  // namespace

std::optional<double> Idle::idleSeconds() {
  if (connection_ && xcb_connection_has_error(connection_.get()) != 0) connection_.reset();
  if (!connection_) connection_ = connector_.connect(kPatience);
  return connection_ ? ask() : std::nullopt;
}

std::optional<double> Idle::ask() {
  const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_screensaver_id);
  if (!extension || extension->present == 0) return {};
  const auto cookie =
      xcb_screensaver_query_info_unchecked(connection_.get(), rootOf(connection_.get()));
  const auto info = waitForReply(connection_.get(), cookie);
  constexpr double kMillisecondsPerSecond = 1000;
  return info ? std::optional(info->ms_since_user_input / kMillisecondsPerSecond) : std::nullopt;
}

}  // namespace orvanta::x11
