#include "app/services.h"

#include <glibmm/datetime.h>
#include <glibmm/main.h>

#include "base/program_files.h"
#include "browser/tab_socket.h"
#include "classify/defaults.h"

namespace orvanta {

Services::Services(DataLock held)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      browserTabs(
          ownProgram("orvanta-tab"), tabSocketFolder(),
          [this](int32_t pid) { return desktop.foreground->windowTitle(pid); }, runChild, wallClock,
          systemLog),
      browserConnection(browserTabs, BrowserSetup::ofUser()),
      collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition,
                 [this](const FrontmostApp& app) { return browserTabs.browserTab(app); }),
      tracker(db, collectors),
      analytics(db, wallClock),
      router(analytics),
      logind(systemBus, {.lockChanged = [this](bool locked) { tracker.setLocked(locked); },
                         .willSleep =
                             [this] {
                               tracker.willSleep([this] {
                                 Glib::MainContext::get_default()->invoke([this] {
                                   logind.readyToSleep();
                                   return false;
                                 });
                               });
                             },
                         .didWake = [this] { tracker.didWake(); }}),
      bridge("orvanta.bridge") {
  BrowserSetup::ofUser().refresh();
  seedDefaults(db, wallClock);
  tracker.applyRetention();
  tracker.start();

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
