// Whether a screen reader runs on the desktop.
#pragma once

#include <giomm/dbusproxy.h>

#include <functional>

namespace orvanta {

/// Follows what the session's accessibility service tells.
class ScreenReader {
 public:
  /// `started` is called on the main thread whenever one is started, not for one that runs already.
  explicit ScreenReader(std::function<void()> started);

 private:
  Glib::RefPtr<Gio::DBus::Proxy> status_;
};

}  // namespace orvanta
