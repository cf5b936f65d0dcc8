// Lines of text to and from another process, over a socket.
#pragma once

#include <glibmm/iochannel.h>
#include <sigc++/connection.h>

#include <functional>
#include <string>
#include <string_view>

namespace orvanta {

/// Both ends of the talk between the resident program and its dashboard use one of these. Nothing
/// blocks: what the other side does not take yet is kept. Main thread only. May be destroyed by the
/// functions that it calls.
class LineChannel {
 public:
  struct Listener {
    std::function<void(std::string line)> received;
    /// The other side is gone, or sends what cannot be a line of ours. Nothing comes any more.
    std::function<void()> closed;
  };

  /// Takes the socket over.
  LineChannel(int socket, Listener listener);
  ~LineChannel();
  LineChannel(const LineChannel&) = delete;
  LineChannel& operator=(const LineChannel&) = delete;

  /// `line` without a line feed in it.
  void send(std::string_view line);

 private:
  bool readable(Glib::IOCondition condition);
  bool writable();
  bool writeSome();
  void close();

  int socket_;
  Listener listener_;
  std::string incoming_;
  std::string outgoing_;
  sigc::connection reading_;
  sigc::connection writing_;
  bool* destroyed_ = nullptr;  // set while a listener runs
};

}  // namespace orvanta
