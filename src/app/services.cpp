#include "app/services.h"

namespace orvanta {

Services::Services(DataLock held, const std::function<void()>& sessionEnded)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition),
      tracker(db, collectors),
      analytics(db, wallClock),
      router(analytics),
      logind(systemBus, {.lockChanged = [this](bool locked) { tracker.setLocked(locked); },
                         .willSleep =
                             [this] {
                               tracker.willSleep(
                                   [this] { mainThread.post([this] { logind.readyToSleep(); }); });
                             },
                         .didWake = [this] { tracker.didWake(); },
                         .sessionEnded = sessionEnded}),
      sessionClient(sessionBus, kApplicationId,
                    [this, sessionEnded] {
                      tracker.shutdown();  // before the session manager hears that we are ready
                      sessionEnded();
                    }),
      bridge("orvanta.bridge") {}

}  // namespace orvanta
