// RAII around an xcb connection.
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <utility>

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

/// Connects to the display of that name, "" for `$DISPLAY`. A server may accept and never answer,
/// for which libxcb waits for ever: so it waits on a thread of its own, of which there is one at
/// most. Used on one thread at a time.
class Connector {
 public:
  explicit Connector(std::string display) : display_(std::move(display)) {}

  /// Null when the display cannot be reached, or has not answered yet: asked again, it goes on
  /// waiting for the same answer.
  Connection connect(std::chrono::milliseconds patience);

 private:
  const std::string display_;
  std::future<Connection> answer_;
};

/// The first screen of the connection, which is the only one on desktops of today.
xcb_window_t rootOf(xcb_connection_t* connection);

}  // namespace orvanta::x11
