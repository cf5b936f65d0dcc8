// Puts our extension into GNOME's shell.
#pragma once

#include <atomic>
#include <string>

#include "base/log.h"
#include "dbus/service.h"

namespace orvanta::dbus {

/// Watches the shell, and installs the extension by which GnomeFocus sees windows. Made and used on
/// the main thread, except running().
class GnomeShell {
 public:
  /// `session` may be null.
  GnomeShell(const Bus& session, Log log);

  /// Whether this session is GNOME's. Any thread.
  bool running() const { return shell_.present(); }

  /// Writes the extension, in the form that the running shell understands, to the user's folder and
  /// switches it on. A shell notices a new extension only when it starts: then the answer is a
  /// French sentence for the user; "" when it is on at once.
  std::string installExtension();

 private:
  void learn();

  const Log log_;
  Service shell_;
  int version_ = 0;      // major; 0 while it is not known
  bool listed_ = false;  // the shell has found the extension as it is
};

}  // namespace orvanta::dbus
