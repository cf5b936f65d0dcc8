#include "app/services.h"

#include <utility>

#include "app/program_files.h"
#include "platform/desktop_actions.h"

namespace orvanta {

Services::Services(DataLock held, Hooks hooks)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition),
      tracker(db, collectors),
      analytics(db, wallClock),
      telemetry(db, appFacts(ORVANTA_VERSION), serviceUrl(), hooks.refreshMenu),
      router({.db = db,
              .tracker = tracker,
              .analytics = analytics,
              .telemetry = telemetry,
              .loginItem = LoginItem::ofUser(),
              .platform = platformActions(hooks)}),
      dashboard(besideProgram("orvanta-dashboard"), router, systemLog),
      logind(systemBus, {.lockChanged = [this](bool locked) { tracker.setLocked(locked); },
                         .willSleep =
                             [this] {
                               tracker.willSleep(
                                   [this] { mainThread.post([this] { logind.readyToSleep(); }); });
                             },
                         .didWake = [this] { tracker.didWake(); },
                         .sessionEnded = hooks.quit}),
      sessionClient(sessionBus, kApplicationId, [this, quit = hooks.quit] {
        tracker.shutdown();  // before the session manager hears that we are ready
        quit();
      }) {
  db.setErrorReport([this](const std::string& message) { telemetry.reportError(message); });
}

Services::~Services() {
  db.setErrorReport({});  // telemetry ends before the last statement
}

PlatformActions Services::platformActions(const Hooks& hooks) {
  const auto onMainThread = [this](const std::function<void()>& act) {
    return [this, act] { mainThread.post(act); };
  };
  PlatformActions actions;
  actions.accessibilityGranted = [this] { return collectors.accessibilityGranted(); };
  actions.openUrl = [this](const std::string& url) {
    mainThread.post([url] { openUrl(url, systemLog); });
  };
  actions.revealData =
      onMainThread([this] { revealFile(sessionBus, db.location().file(), systemLog); });
  actions.saveAs = [this](const std::string& name) { return dashboard.saveAs(name); };
  actions.refreshMenu = onMainThread(hooks.refreshMenu);
  actions.quit = onMainThread(hooks.quit);
  return actions;
}

}  // namespace orvanta
