#include "platform/x11/connection.h"

#include <thread>

namespace orvanta::x11 {

namespace {

Connection connectTo(const std::string& display) {
  Connection connection(xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) return {};
  return connection;
}

}  // namespace

Connection Connector::connect(std::chrono::milliseconds patience) {
  if (!answer_.valid()) {
    std::promise<Connection> promise;
    answer_ = promise.get_future();
    std::thread([display = display_, promise = std::move(promise)]() mutable {
      promise.set_value(connectTo(display));
    }).detach();
  }
  if (answer_.wait_for(patience) != std::future_status::ready) return {};
  return answer_.get();
}

xcb_window_t rootOf(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace orvanta::x11
