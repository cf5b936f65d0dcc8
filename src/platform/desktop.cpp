#include "platform/desktop.h"

#include <cstdlib>
#include <string_view>

#include "platform/dbus/gnome_focus.h"
#include "platform/dbus/inhibitors.h"
#include "platform/dbus/kwin_script.h"
#include "platform/dbus/mutter_idle.h"
#include "platform/sources.h"
#include "platform/sway/tree.h"
#include "platform/wayland/idle.h"
#include "platform/wayland/plasma_windows.h"
#include "platform/wayland/wlr_toplevels.h"
#include "platform/x11/foreground.h"
#include "platform/x11/idle.h"

namespace orvanta {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool isWaylandSession() {
  return !environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland";
}

// XWayland sets DISPLAY in Wayland sessions, where it does not know what is in front.
bool isX11Session() {
  return !environment("DISPLAY").empty() && !isWaylandSession();
}

}  // namespace

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
  std::vector<std::unique_ptr<ForegroundProbe>> foreground;
  std::vector<std::unique_ptr<IdleSource>> idle;
  std::vector<std::unique_ptr<InhibitionProbe>> inhibition;
  inhibition.push_back(std::make_unique<dbus::Inhibitors>(system, session));
  idle.push_back(std::make_unique<dbus::MutterIdle>(session));
  if (isX11Session()) {
    foreground.push_back(std::make_unique<x11::Foreground>("", log));
    idle.push_back(std::make_unique<x11::Idle>());
  } else if (isWaylandSession()) {
    const auto connection = std::make_shared<wayland::Connection>(log);
    auto plasma = std::make_unique<wayland::PlasmaWindows>(connection);
    auto& plasmaWindows = *plasma;
    foreground.push_back(std::make_unique<wayland::WlrToplevels>(connection));
    foreground.push_back(std::move(plasma));
    foreground.push_back(std::make_unique<dbus::KwinScript>(
        session, [&plasmaWindows] { return !plasmaWindows.titlesReadable(); }, log));
    foreground.push_back(std::make_unique<dbus::GnomeFocus>(session));
    idle.push_back(std::make_unique<wayland::ExtIdle>(connection));
    idle.push_back(std::make_unique<wayland::KwinIdle>(connection));
    inhibition.push_back(std::make_unique<sway::Tree>());
  }
  Desktop desktop;
  desktop.foreground = std::make_unique<FirstForeground>(std::move(foreground));
  desktop.idle = std::make_unique<FirstIdle>(std::move(idle));
  desktop.inhibition = std::make_unique<AnyInhibition>(std::move(inhibition));
  return desktop;
}

}  // namespace orvanta
