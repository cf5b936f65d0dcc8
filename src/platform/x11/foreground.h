// The active window of an X11 session.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "base/log.h"
#include "platform/published.h"
#include "platform/x11/connection.h"
#include "platform/x11/window_reader.h"

namespace orvanta::x11 {

/// Follows the active window and its title by property-change events, on a thread of its own, so
/// that a question is answered from memory however slow the server is. A server that goes away is
/// looked for again every few seconds. For a real X11 session only: XWayland's active window is not
/// what the user has in front. The operations may be called from any thread.
class Foreground : public PublishedForeground {
 public:
  /// Of the display of that name, "" for `$DISPLAY`.
  explicit Foreground(std::string display = {}, Log log = systemLog);
  ~Foreground() override;
  Foreground(const Foreground&) = delete;
  Foreground& operator=(const Foreground&) = delete;

  Source source() override { return {"x11", "X11"}; }

 private:
  void follow();
  void followConnection(xcb_connection_t* connection);
  bool waitForServer(int file, int milliseconds) const;
  void look(const WindowReader& reader, xcb_connection_t* connection, xcb_window_t& watched);

  Connector connector_;
  const Log log_;
  int wake_;  // eventfd: readable when the thread must end
  std::atomic<bool> stopping_ = false;
  std::thread thread_;
};

}  // namespace orvanta::x11
