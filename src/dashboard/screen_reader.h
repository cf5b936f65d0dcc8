// Whether a screen reader runs on the desktop.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "dbus/service.h"

namespace orvanta {

/// Follows who asks the accessibility bus to be told what happens in windows. The session's own
/// switches do not say it: the one for screen readers is gone with at-spi2-core 2.61, and the one
/// for accessibility may be on for somebody else.
class ScreenReader {
 public:
  /// `started` is called on the main thread whenever one is started, not for one that runs already.
  explicit ScreenReader(std::function<void()> started);

 private:
  void listen(const dbus::Bus& bus);
  void registered(const std::string& client, const std::string& event);

  const std::function<void()> started_;
  dbus::Service launcher_;
  std::unique_ptr<dbus::Connecting> connecting_;
  std::unique_ptr<dbus::Service> registry_;  // null while there is no accessibility bus
  std::set<std::string> known_;              // clients of that bus, by their unique names
};

}  // namespace orvanta
