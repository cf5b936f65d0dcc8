#include "platform/dbus/lock_screens.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvanta::dbus {
namespace {

struct Known {
  const char* id;
  const char* name;
  const char* service;  // and interface
  std::array<const char*, 2> paths;
};
constexpr std::array<Known, 5> kKnown{{
    {"gnome-screensaver", "GNOME", "org.gnome.ScreenSaver", {"/org/gnome/ScreenSaver", nullptr}},
    {"freedesktop-screensaver",
     "verrou d’écran",
     "org.freedesktop.ScreenSaver",
     {"/org/freedesktop/ScreenSaver", "/ScreenSaver"}},
    {"cinnamon-screensaver",
     "Cinnamon",
     "org.cinnamon.ScreenSaver",
     {"/org/cinnamon/ScreenSaver", nullptr}},
    {"mate-screensaver", "MATE", "org.mate.ScreenSaver", {"/org/mate/ScreenSaver", nullptr}},
    {"xfce-screensaver", "Xfce", "org.xfce.ScreenSaver", {"/org/xfce/ScreenSaver", nullptr}},
}};

}  // namespace

LockScreens::LockScreens(const Bus& session, std::function<void(bool)> changed)
    : changed_(std::move(changed)) {
  for (const auto& known : kKnown) {
    auto& locker = *lockers_.emplace_back(
        std::make_unique<Locker>(Source{known.id, known.name}, session, known.service));
    for (const auto* path : known.paths) {
      if (!path) continue;
      locker.service.onSignal(
          path, known.service, "ActiveChanged",
          [this, &locker](const Reply& active) { setActive(locker, argument<bool>(active)); });
    }
    locker.service.watch(
        [this, &locker, &known] {
          locker.service.call(
              known.paths.front(), known.service, "GetActive", {},
              [this, &locker](const Reply& active) { setActive(locker, argument<bool>(active)); });
        },
        [this, &locker] { setActive(locker, false); });
  }
}

std::vector<Source> LockScreens::present() const {
  std::vector<Source> sources;
  for (const auto& locker : lockers_) {
    if (locker->service.present()) sources.push_back(locker->source);
  }
  return sources;
}

void LockScreens::setActive(Locker& locker, bool active) {
  locker.active = active;
  const bool covered =
      std::any_of(lockers_.begin(), lockers_.end(), [](const auto& each) { return each->active; });
  if (std::exchange(covered_, covered) != covered) changed_(covered);
}

}  // namespace orvanta::dbus
