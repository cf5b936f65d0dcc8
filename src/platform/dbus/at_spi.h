// The active window as applications tell it to assistive technologies.
#pragma once

#include <sigc++/connection.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// Follows the frames that become active on the accessibility bus (AT-SPI 2), by plain D-Bus: its
/// library can abort the process. Sees only applications that speak AT-SPI, which browsers and
/// Electron do not by default; for GNOME without our extension. Made on the main thread.
class AtSpi : public PublishedForeground {
 public:
  /// `session` may be null. `needed` is asked every few seconds while GNOME's shell runs; without
  /// need nothing is connected.
  AtSpi(const Bus& session, std::function<bool()> needed);
  ~AtSpi() override;
  AtSpi(const AtSpi&) = delete;
  AtSpi& operator=(const AtSpi&) = delete;

  static constexpr auto kSource = "at-spi";
  Source source() override { return {kSource, "accessibilité (AT-SPI)"}; }

 private:
  /// An object of an application on the accessibility bus.
  struct Frame {
    std::string application;  // unique name
    std::string path;
    friend bool operator==(const Frame&, const Frame&) = default;
  };
  using Then = std::function<void(const Reply&)>;

  bool look();
  void connect(const std::string& address);
  void disconnect();
  void ask(const std::string& name, const std::string& path, const char* interface,
           const char* method, const Reply& arguments, Then then);
  void findActive();
  void activated(const Frame& frame);
  void deactivated(const Frame& frame);
  void readTitle();
  void show();

  const std::function<bool()> needed_;
  Service shell_;
  Service launcher_;
  Bus bus_;  // the accessibility bus; null while not needed
  Glib::RefPtr<Gio::Cancellable> cancel_;
  std::vector<guint> subscriptions_;
  sigc::connection timer_;
  bool connecting_ = false;
  Frame active_;
  WindowClaims claims_;
};

}  // namespace orvanta::dbus
