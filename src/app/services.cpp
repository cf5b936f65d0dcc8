#include "app/services.h"

#include <glibmm/datetime.h>
#include <glibmm/main.h>

#include "classify/defaults.h"

namespace orvanta {

Services::Services(DataLock held)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition),
      tracker(db, collectors),
      analytics(db, wallClock),
      router(analytics),
      bridge("orvanta.bridge") {
  seedDefaults(db, wallClock);
  tracker.applyRetention();
  tracker.start();
  desktop.session->listen({.lockChanged = [this](bool locked) { tracker.setLocked(locked); },
                           .willSleep =
                               [this] {
                                 tracker.willSleep([this] {
                                   Glib::MainContext::get_default()->invoke([this] {
                                     desktop.session->readyToSleep();
                                     return false;
                                   });
                                 });
                               },
                           .didWake = [this] { tracker.didWake(); }});

  constexpr unsigned kHour = 3600;
  constexpr int kRetentionHour = 4;
  Glib::signal_timeout().connect_seconds(
      [this] {
        if (Glib::DateTime::create_now_local().get_hour() == kRetentionHour)
          tracker.applyRetention();
        return true;
      },
      kHour);
}

}  // namespace orvanta
