// RAII around an xcb connection.
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace orvanta::x11 {

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

struct Free {
  // xcb allocates with malloc.
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
  void operator()(void* reply) const { std::free(reply); }
};
/// A reply or event of xcb.
template <class Reply>
using Owned = std::unique_ptr<Reply, Free>;

/// To the display of that name ("" for `$DISPLAY`); null when it cannot be reached.
Connection connect(const std::string& display);

/// The first screen of the connection, which is the only one on desktops of today.
xcb_window_t rootOf(xcb_connection_t* connection);

}  // namespace orvanta::x11
