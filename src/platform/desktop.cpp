#include "platform/desktop.h"

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/dbus/at_spi.h"
#include "platform/dbus/gnome_focus.h"
#include "platform/dbus/gnome_shell.h"
#include "platform/dbus/inhibitors.h"
#include "platform/dbus/kwin_script.h"
#include "platform/dbus/logind_idle.h"
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

constexpr auto kUnknownDesktop =
    "Ce bureau ne dit à aucun programme quelle fenêtre est active : tout le temps y est compté "
    "comme « Inconnu ». Ouvrez plutôt votre session sous X11, GNOME, KDE Plasma, sway ou un "
    "compositeur apparenté.";

constexpr auto kFilmsAreMissed =
    "Rien dans cette session ne dit qu’une vidéo est affichée : un film comptera comme absence, à "
    "moins d’allonger le seuil d’inactivité.";

struct Sources {
  std::vector<std::unique_ptr<ForegroundProbe>> foreground;
  std::vector<std::unique_ptr<IdleSource>> idle;
  std::vector<std::unique_ptr<InhibitionProbe>> inhibition;
};

void addX11(Sources& sources, const Log& log) {
  sources.foreground.push_back(std::make_unique<x11::Foreground>("", log));
  sources.idle.push_back(std::make_unique<x11::Idle>());
}

void addWayland(Sources& sources, const dbus::Bus& session, const Log& log) {
  const auto connection = std::make_shared<wayland::Connection>(log);
  auto plasma = std::make_unique<wayland::PlasmaWindows>(connection);
  auto script = std::make_unique<dbus::KwinScript>(
      session, [&windows = *plasma] { return !windows.titlesReadable() || windows.doubtful(); },
      log);
  sources.foreground.push_back(std::make_unique<wayland::WlrToplevels>(connection));
  sources.foreground.push_back(std::move(plasma));
  sources.foreground.push_back(std::move(script));
  auto extension = std::make_unique<dbus::GnomeFocus>(session);
  auto accessibility = std::make_unique<dbus::AtSpi>(
      session, [&windows = *extension] { return !windows.titlesReadable(); });
  sources.foreground.push_back(std::move(extension));
  sources.foreground.push_back(std::move(accessibility));
  sources.idle.push_back(std::make_unique<wayland::ExtIdle>(connection));
  sources.idle.push_back(std::make_unique<wayland::KwinIdle>(connection));
  sources.inhibition.push_back(std::make_unique<sway::Tree>());
}

// Not every application tells assistive technologies what it shows.
bool canReadAll(ForegroundProbe& foreground) {
  return foreground.titlesReadable() && foreground.source().id != dbus::AtSpi::kSource;
}

bool isWaylandSession() {
  return !environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland";
}

// XWayland sets DISPLAY in Wayland sessions, where it does not know what is in front.
bool isX11Session() {
  return !environment("DISPLAY").empty() && !isWaylandSession();
}

}  // namespace

Desktop blindDesktop() {
  Desktop desktop;
  desktop.foreground =
      std::make_unique<FirstForeground>(std::vector<std::unique_ptr<ForegroundProbe>>());
  desktop.idle = std::make_unique<FirstIdle>(std::vector<std::unique_ptr<IdleSource>>());
  desktop.inhibition =
      std::make_unique<AnyInhibition>(std::vector<std::unique_ptr<InhibitionProbe>>());
  desktop.session = std::make_unique<SessionEvents>(dbus::Bus(), dbus::Bus());
  desktop.requestTitles = desktop.whyTitlesAreMissing =
      desktop.whyFilmsAreMissed = [] { return std::string(); };
  return desktop;
}

ProbeSources Desktop::sources() const {
  return {foreground->source(), idle->source(), inhibition->source(), session->source()};
}

Desktop observeDesktop(const dbus::Bus& system, const dbus::Bus& session, const Log& log) {
  Sources sources;
  sources.idle.push_back(std::make_unique<dbus::MutterIdle>(session));
  sources.inhibition.push_back(std::make_unique<dbus::Inhibitors>(system, session));
  const auto shell = std::make_shared<dbus::GnomeShell>(session, log);
  if (isX11Session()) {
    addX11(sources, log);
  } else if (isWaylandSession()) {
    addWayland(sources, session, log);
  } else {
    log("Orvanta: aucun bureau trouvé, le temps sera « Inconnu »");
  }
  sources.idle.push_back(std::make_unique<dbus::LogindIdle>(system));

  Desktop desktop;
  auto& foreground =
      *(desktop.foreground = std::make_unique<FirstForeground>(std::move(sources.foreground)));
  desktop.idle = std::make_unique<FirstIdle>(std::move(sources.idle));
  auto& inhibition =
      *(desktop.inhibition = std::make_unique<AnyInhibition>(std::move(sources.inhibition)));
  desktop.session = std::make_unique<SessionEvents>(system, session);
  // Players and browsers do not tell logind; on Wayland the compositor knows, and calls it input.
  desktop.whyFilmsAreMissed = [&inhibition, x11 = isX11Session()]() -> std::string {
    if (!x11) return {};
    const auto source = inhibition.source();
    return source == kNoSource || source.id == "logind" ? kFilmsAreMissed : "";
  };
  desktop.requestTitles = [&foreground, shell]() -> std::string {
    if (canReadAll(foreground)) return {};
    return shell->running() ? shell->installExtension() : kUnknownDesktop;
  };
  desktop.whyTitlesAreMissing = [&foreground, shell]() -> std::string {
    if (canReadAll(foreground)) return {};
    return shell->running() ? shell->whyNoTitles() : kUnknownDesktop;
  };
  return desktop;
}

}  // namespace orvanta
