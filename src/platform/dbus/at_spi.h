// The active window as applications tell it to assistive technologies.
#pragma once

#include <sigc++/connection.h>

#include <functional>
#include <memory>
#include <string>

#include "dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// Follows the frames that become active on the accessibility bus (AT-SPI 2), by plain D-Bus: its
/// library can abort the process. One whose application leaves that bus is not active any more.
/// Sees only applications that speak AT-SPI, which browsers and Electron do not by default; for
/// GNOME without our extension. Made on the main thread.
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

  bool look();
  void connect(const std::string& address);
  void disconnect();
  void connected(const Bus& bus);
  void children(const std::string& name, const std::string& path,
                std::function<void(const Frame&)> then);
  void readName(const std::string& path, std::function<void(const std::string&)> then);
  void findActive();
  void activated(const Frame& frame);
  void deactivated(const Frame& frame);
  void readTitle();
  void show();

  const std::function<bool()> needed_;
  Service shell_;
  Service launcher_;
  std::unique_ptr<Connecting> connecting_;
  std::unique_ptr<Conversation> talk_;  // on the accessibility bus; null while not needed
  sigc::connection timer_;
  bool asked_ = false;  // where that bus is
  Frame active_;
  WindowClaims claims_;
};

}  // namespace orvanta::dbus
