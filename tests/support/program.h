// What stands behind the router, put together over a store and a desktop of the test.
#pragma once

#include <boost/json/parse.hpp>
#include <string>
#include <vector>

#include "bridge/request.h"
#include "bridge/router.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta::test {

struct Program {
  Program() = default;
  /// Over the store in this folder.
  explicit Program(const std::filesystem::path& folder) : store(folder) {}

  /// The answer of a route to arguments in JSON.
  boost::json::value call(const std::string& route, const std::string& body = "{}") {
    return boost::json::parse(answer(router, route, boost::json::parse(body).as_object()).json);
  }

  /// What the route asked the desktop to do, in order.
  std::vector<std::string> asked;
  std::optional<std::filesystem::path> saveTo;
  BrowserTest browserTest{true, ""};

  TempStore store;
  FakeDesktop desktop;
  FakeClock clock;
  Calendar calendar{Glib::TimeZone::create("Europe/Paris")};
  Tracker tracker{store.db, desktop.collectors, clock.read(), clock.uptime()};
  Analytics analytics{store.db, clock.read(), calendar};
  History history{store.db, clock.read()};
  Backups backups{Backups::folderOf(store.db.location())};
  StoreKeeper keeper{store.db, backups, clock.read(), calendar};
  Telemetry telemetry{store.db, {"0.1", "12.0", "x86_64"}, "http://127.0.0.1:1", {}, clock.read()};
  Router router{{.db = store.db,
                 .tracker = tracker,
                 .analytics = analytics,
                 .history = history,
                 .keeper = keeper,
                 .telemetry = telemetry,
                 .loginItem = {store.db.location().dir / "autostart", "/opt/Mes \"outils\"/orv$"},
                 .platform = actions()},
                clock.read(),
                calendar};

 private:
  PlatformActions actions() {
    const auto note = [this](const char* what) {
      return [this, what] { asked.emplace_back(what); };
    };
    PlatformActions actions;
    actions.accessibilityGranted = [] { return true; };
    actions.probes = [] { return boost::json::object{{"idle", "x11"}}; };
    actions.probeNames = [] { return boost::json::object{{"idle", "X11"}}; };
    actions.requestAccessibility = note("requestAccessibility");
    actions.runningBrowsers = [] {
      return std::vector<BrowserName>{{"org.mozilla.firefox", "Firefox"}};
    };
    actions.isBrowser = [](const std::string& bundle) { return bundle == "org.mozilla.firefox"; };
    actions.testBrowser = [this](const std::string& bundle) {
      asked.push_back("test " + bundle);
      return browserTest;
    };
    actions.openAutomation = note("openAutomation");
    actions.openUrl = [this](const std::string& url) { asked.push_back("open " + url); };
    actions.revealData = note("reveal");
    actions.saveAs = [this](const std::string& name) {
      asked.push_back("save " + name);
      return saveTo;
    };
    actions.refreshMenu = note("menu");
    actions.quit = note("quit");
    return actions;
  }
};

}  // namespace orvanta::test
