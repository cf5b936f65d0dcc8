// Whether something keeps the display awake, as the desktop's services know it.
#pragma once

#include <glibmm/main.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dbus/service.h"
#include "platform/probes.h"

namespace orvanta::dbus {

/// Asks every service that keeps a list of inhibitors, all at once: logind ("idle" in block mode),
/// GNOME's session manager (flag 8, idle), KDE's power management (flag 4, screen settings), and
/// where that is not, the power management of freedesktop.org, which Xfce and MATE have and which
/// does not tell the display from the machine. True when any says so. A service that is not
/// there is not started. One that has not answered after 40 ms counts by its last answer, and is
/// neither asked nor waited for again before it answers. Made on the main thread, whose loop
/// watches the services; asked from one thread.
class Inhibitors : public InhibitionProbe {
 public:
  /// On these buses; either may be null.
  Inhibitors(const Bus& system, const Bus& session);
  ~Inhibitors() override;
  Inhibitors(const Inhibitors&) = delete;
  Inhibitors& operator=(const Inhibitors&) = delete;

  bool displayKeptAwake() override;
  Source source() override;

 private:
  struct Question {
    Source source;
    std::unique_ptr<Service> service;  // only watched: it may not be called by two threads
    std::unique_ptr<Conversation> talk;
    Place place;
    const char* method;
    Reply arguments;
    std::function<bool(const Reply&)> inhibited;
    bool waiting = false;
    bool late = false;  // not answered in time
    bool answer = false;
  };

  void add(Source source, const Bus& bus, const Place& place, const char* method,
           const Reply& arguments, std::function<bool(const Reply&)> inhibited);
  bool present(const Question& question) const;
  static void ask(Question& question);

  // Answers arrive in a context of our own, which only displayKeptAwake() turns.
  Glib::RefPtr<Glib::MainContext> context_ = Glib::MainContext::create();
  std::vector<Question> questions_;
};

}  // namespace orvanta::dbus
