// Puts our extension into GNOME's shell.
#pragma once

#include <atomic>
#include <string>

#include "base/log.h"
#include "dbus/service.h"

namespace orvanta::dbus {

/// Watches the shell, installs the extension by which GnomeFocus sees windows, and rewrites it
/// where it is installed and not as it should be. Made and used on the main thread, except as said.
class GnomeShell {
 public:
  /// `session` may be null.
  GnomeShell(const Bus& session, Log log);

  /// Whether this session is GNOME's. Any thread.
  bool running() const { return shell_.present(); }

  /// A French sentence that says why the extension tells nothing, and what helps. Any thread.
  std::string whyNoTitles() const;

  /// Writes the extension, in the form that the running shell understands, to the user's folder and
  /// switches it on. A shell notices a new extension only when it starts: then the answer is a
  /// French sentence for the user; "" when it is on at once.
  std::string installExtension();

 private:
  void learn();
  void refresh();

  const Log log_;
  Service shell_;
  int version_ = 0;                      // major; 0 while it is not known
  std::atomic<bool> installed_ = false;  // the extension is there as it should be
  std::atomic<bool> loadable_ = false;   // and the shell has found it so
};

}  // namespace orvanta::dbus
