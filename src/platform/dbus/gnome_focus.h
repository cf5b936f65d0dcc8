// The focused window of GNOME, told by our extension of its shell.
#pragma once

#include <optional>

#include "dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// The window that our extension reports: three texts, application, class and title, and the
/// process number. Throws what argument() throws.
std::optional<WindowClaims> toldByGnome(const Reply& window);

/// Listens to the extension as soon as it is there. It answers nobody but the owner of the bus name
/// "fr.quellvane.orvanta", which is this program. Made on the main thread.
class GnomeFocus : public PublishedForeground {
 public:
  /// `session` may be null.
  explicit GnomeFocus(const Bus& session);

  Source source() override { return {"gnome-extension", "extension GNOME"}; }

 private:
  void focused(const Reply& window);

  Service extension_;
};

}  // namespace orvanta::dbus
