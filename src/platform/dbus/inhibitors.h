// Whether something keeps the display awake, as the desktop's services know it.
#pragma once

#include <giomm/dbusconnection.h>
#include <glibmm/main.h>

#include <functional>
#include <vector>

#include "platform/probes.h"

namespace orvanta::dbus {

/// Asks every service that keeps a list of inhibitors, all at once: logind ("idle" in block mode),
/// GNOME's session manager (flag 8, idle), KDE's power management (flag 4, screen settings). True
/// when any says so. A service that is not there is not started. One that has not answered after 50
/// ms counts by its last answer, and is not asked again before it answers. Called from one thread.
class Inhibitors : public InhibitionProbe {
 public:
  /// On these buses; either may be null.
  Inhibitors(const Glib::RefPtr<Gio::DBus::Connection>& system,
             const Glib::RefPtr<Gio::DBus::Connection>& session);
  ~Inhibitors() override;
  Inhibitors(const Inhibitors&) = delete;
  Inhibitors& operator=(const Inhibitors&) = delete;

  bool displayKeptAwake() override;

 private:
  struct Question {
    Glib::RefPtr<Gio::DBus::Connection> bus;
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
    Glib::VariantContainerBase arguments;
    std::function<bool(const Glib::VariantContainerBase&)> inhibited;
    bool waiting = false;
    bool answer = false;
  };

  void ask(Question& question);

  // Answers arrive in a context of our own, which only displayKeptAwake() turns.
  Glib::RefPtr<Glib::MainContext> context_ = Glib::MainContext::create();
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  std::vector<Question> questions_;
};

}  // namespace orvanta::dbus
