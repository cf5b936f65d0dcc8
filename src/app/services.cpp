#include "app/services.h"

#include <malloc.h>

#include <chrono>
#include <utility>

#include "app/desktop_routes.h"
#include "base/program_files.h"
#include "browser/browser_setup.h"
#include "browser/tab_socket.h"
#include "classify/defaults.h"
#include "platform/desktop_actions.h"

namespace orvanta {

Services::Services(DataLock held, const Hooks& hooks)
    : lock(std::move(held)),
      backups(Backups::folderOf(DataLocation::ofUser())),
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
      history(db),
      keeper(db, backups),
      telemetry(db, appFacts(ORVANTA_VERSION), serviceUrl(), hooks.refreshMenu),
      router({.db = db,
              .tracker = tracker,
              .analytics = analytics,
              .history = history,
              .keeper = keeper,
              .telemetry = telemetry,
              .loginItem = LoginItem::ofUser(),
              .platform = platformActions(hooks)}),
      dashboard(
          ownProgram("orvanta-dashboard"), router, hooks.tell,
          [this] {
            db.releaseScanMemory();
            malloc_trim(0);
          },
          systemLog),
      sessionClient(sessionBus, kApplicationId, [this, quit = hooks.quit] {
        browserTabs.giveUp();
        tracker.shutdown();  // before the session manager hears that we are ready
        quit();
      }) {
  db.setErrorReport([this](const std::string& message) { telemetry.reportError(message); });
  keepStore(hooks);
  BrowserSetup::ofUser().refresh();
  desktop.session->listen({.lockChanged = [this](bool locked) { tracker.setLocked(locked); },
                           .willSleep =
                               [this] {
                                 tracker.willSleep([this] {
                                   mainThread.post([this] { desktop.session->readyToSleep(); });
                                 });
                               },
                           .didWake = [this] { tracker.didWake(); },
                           .sessionEnded = hooks.quit});
}

Services::~Services() {
  db.setErrorReport({});  // telemetry ends before the last statement
  db.setReplaced({});
  tracker.setErased({});
}

// A file that is new, or another, needs what every store has; and the user is told of it.
void Services::keepStore(const Hooks& hooks) {
  const auto renewed = [this, refresh = hooks.refreshMenu] {
    seedDefaults(db, wallClock);
    history.forgetAll();
    mainThread.post(refresh);
  };
  const auto tell = [this, tell = hooks.tell](const std::string& sentence) {
    mainThread.post([tell, sentence] { tell(sentence); });
  };
  keeper.listen({.renewed = renewed, .tell = tell});
  db.setReplaced([renewed, tell](const std::string& sentence) {
    renewed();
    if (!sentence.empty()) tell(sentence);
  });
  tracker.setErased([this](double before) {
    history.forgetUndone();
    keeper.eraseLater(stripTitlesBefore(before));
  });
}

PlatformActions Services::platformActions(const Hooks& hooks) {
  const auto onMainThread = [this](const std::function<void()>& act) {
    return [this, act] { mainThread.post(act); };
  };
  auto actions = desktopActions(desktop, browserConnection);
  actions.requestAccessibility = onMainThread([this, tell = hooks.tell] {
    const auto advice = desktop.requestTitles();
    if (!advice.empty()) tell(advice);
  });
  actions.openAutomation =
      onMainThread([this] { openFile(browserConnection.helpPage(), systemLog); });
  actions.openUrl = [this](const std::string& url) {
    mainThread.post([url] { openUrl(url, systemLog); });
  };
  actions.revealData =
      onMainThread([this] { revealFile(sessionBus, db.location().file(), systemLog); });
  actions.saveAs = [this](const std::string& name) { return dashboard.saveAs(name); };
  actions.refreshMenu = onMainThread(hooks.refreshMenu);
  // The answer goes out first.
  actions.quit = onMainThread(
      [this, quit = hooks.quit] { mainThread.after(std::chrono::milliseconds(50), quit); });
  return actions;
}

}  // namespace orvanta
