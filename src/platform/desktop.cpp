#include "platform/desktop.h"

#include <cstdlib>
#include <string_view>

#include "platform/dbus/inhibitors.h"
#include "platform/x11/foreground.h"
#include "platform/x11/idle.h"

namespace orvanta {
namespace {

class NoForeground : public ForegroundProbe {
 public:
  std::optional<FrontmostApp> frontmostApp() override { return {}; }
  std::optional<std::string> windowTitle(int32_t /*pid*/) override { return {}; }
  bool titlesReadable() override { return false; }
};

class NoIdle : public IdleProbe {
 public:
  double idleSeconds() override { return 0; }
};

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

class NoInhibition : public InhibitionProbe {
 public:
  bool displayKeptAwake() override { return false; }
};

// XWayland sets DISPLAY in Wayland sessions, where it does not know what is in front.
bool isX11Session() {
  return !environment("DISPLAY").empty() && environment("WAYLAND_DISPLAY").empty() &&
         environment("XDG_SESSION_TYPE") != "wayland";
}

}  // namespace

Desktop blindDesktop() {
  return {std::make_unique<NoForeground>(), std::make_unique<NoIdle>(),
          std::make_unique<NoInhibition>()};
}

Glib::RefPtr<Gio::DBus::Connection> connectBus(Gio::DBus::BusType type) {
  try {
    auto bus = Gio::DBus::Connection::get_sync(type);
    bus->set_exit_on_close(false);
    return bus;
  } catch (const Glib::Error&) {
    return {};
  }
}

Desktop observeDesktop(const Glib::RefPtr<Gio::DBus::Connection>& system,
                       const Glib::RefPtr<Gio::DBus::Connection>& session, const Log& log) {
  Desktop desktop;
  desktop.inhibition = std::make_unique<dbus::Inhibitors>(system, session);
  if (isX11Session()) {
    desktop.foreground = std::make_unique<x11::Foreground>("", log);
    desktop.idle = std::make_unique<x11::Idle>();
  } else {
    log("Orvanta: ce bureau ne dit pas quelle fenêtre est active, le temps sera « Inconnu »");
    desktop.foreground = std::make_unique<NoForeground>();
    desktop.idle = std::make_unique<NoIdle>();
  }
  return desktop;
}

}  // namespace orvanta
