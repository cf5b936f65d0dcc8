#include "app/local_call.h"

#include <giomm/appinfo.h>
#include <glibmm/convert.h>
#include <glibmm/main.h>

#include <iostream>

#include "app/call_loop.h"
#include "app/desktop_routes.h"
#include "base/program_files.h"
#include "browser/browser_setup.h"
#include "browser/tab_socket.h"
#include "capture/browser_connection.h"
#include "platform/desktop.h"
#include "platform/desktop_actions.h"

namespace orvanta {
namespace {

// The probes of this session, given some seconds to find their services.
Desktop lookAtDesktop(double patience) {
  auto desktop = observeDesktop(connectBus(Gio::DBus::BusType::SYSTEM),
                                connectBus(Gio::DBus::BusType::SESSION), systemLog);
  desktop.session->listen(
      {.lockChanged = [](bool) {}, .willSleep = [] {}, .didWake = [] {}, .sessionEnded = [] {}});
  constexpr unsigned kStep = 10;  // milliseconds
  const auto context = Glib::MainContext::get_default();
  for (const double end = wallClock() + patience; wallClock() < end;) {
    if (desktop.sources().foreground != kNoSource && desktop.sources().session != kNoSource) break;
    const auto timer = Glib::signal_timeout().connect([] { return false; }, kStep);
    context->iteration(true);
  }
  return desktop;
}

}  // namespace

CallResult callLocally(const std::vector<std::string>& words) {
  constexpr double kMoment = 0.5;  // seconds
  const bool many = words == std::vector<std::string>{kManyCalls};
  const bool aboutDesktop = !words.empty() && words.front().starts_with("permissions.");
  auto desktop = many || aboutDesktop ? lookAtDesktop(many ? 0 : kMoment) : blindDesktop();
  Database db(DataLocation::ofUser());
  BrowserTabs tabs(
      ownProgram("orvanta-tab"), tabSocketFolder(),
      [&](int32_t pid) { return desktop.foreground->windowTitle(pid); }, runChild, wallClock,
      systemLog);
  BrowserConnection browsers(tabs, BrowserSetup::ofUser());
  const Collectors collectors(*desktop.foreground, *desktop.idle, *desktop.inhibition);
  Tracker tracker(db, collectors);
  const Analytics analytics(db, wallClock);
  History history(db);
  Backups backups(Backups::folderOf(db.location()));
  StoreKeeper keeper(db, backups);
  Telemetry telemetry(db, appFacts(ORVANTA_VERSION), serviceUrl());

  const auto open = [](const std::string& uri) {
    try {
      Gio::AppInfo::launch_default_for_uri(uri);
    } catch (const Glib::Error& error) {
      systemLog(std::string("Orvanta: ouverture impossible : ") + error.what());
    }
  };
  auto actions = desktopActions(desktop, browsers);
  actions.requestAccessibility = [&] {
    const auto advice = desktop.requestTitles();
    if (!advice.empty()) systemLog("Orvanta: " + advice);
  };
  actions.openAutomation = [&] { open(Glib::filename_to_uri(browsers.helpPage().string())); };
  actions.openUrl = [&](const std::string& url) {
    if (mayBeOpened(url)) open(url);
  };
  actions.revealData = [&] { open(Glib::filename_to_uri(db.location().dir.string())); };
  Router router({.db = db,
                 .tracker = tracker,
                 .analytics = analytics,
                 .history = history,
                 .keeper = keeper,
                 .telemetry = telemetry,
                 .loginItem = LoginItem::ofUser(),
                 .platform = std::move(actions)});
  if (many) {
    answerLines(router, std::cin, std::cout);
    return {};
  }
  auto result = callRoute(router, words);
  if (!db.readable()) {
    result.status = 1;
    result.complaint = sentenceOf(StoreTrouble::Absent);
  }
  return result;
}

}  // namespace orvanta
