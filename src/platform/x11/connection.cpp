#include "platform/x11/connection.h"

namespace orvanta::x11 {

Connection connect(const std::string& display) {
  Connection connection(xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) return {};
  return connection;
}

xcb_window_t rootOf(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace orvanta::x11
