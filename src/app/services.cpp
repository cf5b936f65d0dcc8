#include "app/services.h"

#include <glibmm/datetime.h>
#include <glibmm/main.h>

#include "app/program_files.h"
#include "classify/defaults.h"
#include "platform/desktop_actions.h"

namespace orvanta {

Services::Services(DataLock held, std::function<void()> quit)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition),
      tracker(db, collectors),
      analytics(db, wallClock),
      telemetry(db, appFacts(ORVANTA_VERSION), serviceUrl()),
      router({.db = db,
              .tracker = tracker,
              .analytics = analytics,
              .telemetry = telemetry,
              .loginItem = LoginItem::ofUser(),
              .platform = platformActions(std::move(quit))}),
      dashboard(besideProgram("orvanta-dashboard"), router, systemLog),
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
                         .didWake = [this] { tracker.didWake(); }}) {
  db.setErrorReport([this](const std::string& message) { telemetry.reportError(message); });
  seedDefaults(db, wallClock);
  tracker.applyRetention();
  tracker.start();

  constexpr unsigned kHour = 3600;
  constexpr int kRetentionHour = 4;
  Glib::signal_timeout().connect_seconds(
      [this] {
        if (Glib::DateTime::create_now_local().get_hour() == kRetentionHour)
          tracker.applyRetention();
        telemetry.daily();
        return true;
      },
      kHour);
  telemetry.daily();
}

Services::~Services() {
  db.setErrorReport({});  // telemetry ends before the last statement
}

PlatformActions Services::platformActions(std::function<void()> quit) {
  PlatformActions actions;
  actions.accessibilityGranted = [this] { return collectors.accessibilityGranted(); };
  actions.openUrl = [this](const std::string& url) {
    mainThread.post([url] { openUrl(url, systemLog); });
  };
  actions.revealData = [this] {
    mainThread.post([this] { revealFile(sessionBus, db.location().file(), systemLog); });
  };
  actions.saveAs = [this](const std::string& name) { return dashboard.saveAs(name); };
  actions.quit = [this, quit = std::move(quit)] { mainThread.post(quit); };
  return actions;
}

}  // namespace orvanta
