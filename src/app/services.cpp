#include "app/services.h"

#include <utility>

#include "base/program_files.h"
#include "browser/browser_setup.h"
#include "browser/tab_socket.h"
#include "platform/desktop_actions.h"

namespace orvanta {

Services::Services(DataLock held, Hooks hooks)
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
      telemetry(db, appFacts(ORVANTA_VERSION), serviceUrl(), hooks.refreshMenu),
      router({.db = db,
              .tracker = tracker,
              .analytics = analytics,
              .telemetry = telemetry,
              .loginItem = LoginItem::ofUser(),
              .platform = platformActions(hooks)}),
      dashboard(ownProgram("orvanta-dashboard"), router, systemLog),
      sessionClient(sessionBus, kApplicationId, [this, quit = hooks.quit] {
        tracker.shutdown();  // before the session manager hears that we are ready
        quit();
      }) {
  db.setErrorReport([this](const std::string& message) { telemetry.reportError(message); });
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
}

PlatformActions Services::platformActions(const Hooks& hooks) {
  const auto onMainThread = [this](const std::function<void()>& act) {
    return [this, act] { mainThread.post(act); };
  };
  PlatformActions actions;
  actions.probes = [this]() -> boost::json::object {
    const auto sources = desktop.sources();
    return {{"foreground", sources.foreground},
            {"idle", sources.idle},
            {"inhibition", sources.inhibition},
            {"session", sources.session}};
  };
  actions.requestAccessibility = onMainThread([this, tell = hooks.tell] {
    const auto advice = desktop.requestTitles();
    if (!advice.empty()) tell(advice);
  });
  actions.whyTitlesAreMissing = [this] { return desktop.whyTitlesAreMissing(); };
  actions.accessibilityGranted = [this] { return collectors.accessibilityGranted(); };
  actions.runningBrowsers = [] {
    std::vector<BrowserName> names;
    for (const auto& running : runningBrowsers()) {
      names.push_back({std::string(running.browser->bundle), std::string(running.browser->name)});
    }
    return names;
  };
  actions.isBrowser = [](const std::string& bundle) {
    return BrowserConnection::browserScript(bundle).has_value();
  };
  actions.testBrowser = [this](const std::string& bundle) {
    browserConnection.resetBrowserCooldowns();
    auto result = browserConnection.test(bundle);
    browserConnection.resetBrowserCooldowns();  // the capture is not held back by the test
    return BrowserTest{.ok = result.output.has_value(), .error = std::move(result.error)};
  };
  actions.openAutomation =
      onMainThread([this] { openFile(browserConnection.helpPage(), systemLog); });
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
